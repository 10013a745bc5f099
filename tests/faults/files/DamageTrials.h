#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "faults/files/Transcript.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// Gives damaged copies of one database to the library and to the reference implementation, and expects the same
/// results from both and the same bytes in the file afterwards.
class DamageTrials {
public:
    /// Creates the undamaged database.
    explicit DamageTrials(std::size_t pageSize);

    const std::string& Content() const { return m_content; }

    /// Tries one damaged content. `damage` describes the damage for a failure's message. Returns whether both results
    /// are equal.
    bool Try(const std::string& damaged, const std::string& damage, bool readOnly = false);

    /// How many damaged databases were tried, and how many of them gave the same results as the undamaged one.
    int trials = 0;
    int unnoticed = 0;

    /// How many were read without a failure but with other content.
    int otherContent = 0;

    /// For each of SQLite's codes, the number of databases on which an operation failed with that code.
    std::map<int, int> codes;

private:
    void Tally(const Transcript& answers, const Transcript& undamaged);

    const TemporaryDirectory m_directory;
    const std::string m_path = m_directory.File("damaged.db");
    const std::string m_content;
    std::map<bool, Transcript> m_undamaged;
};

} // namespace Morvik::sql::tests
