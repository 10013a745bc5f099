#pragma once

#include <map>
#include <string>

#include "files/Transcript.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// Hands damaged copies of one database to the library and to plain SQLite, and expects the same answers from both and
/// the same bytes in the file afterwards.
class DamageTrials {
public:
    /// `content` is the undamaged database.
    explicit DamageTrials(std::string content);

    const std::string& Content() const { return m_content; }

    /// Tries one damaged content. `damage` says for a failure's message what was done. Returns whether both agreed.
    bool Try(const std::string& damaged, const std::string& damage, bool readOnly = false);

    /// How many damaged databases were tried, and how many of them were answered like the undamaged one.
    int trials = 0;
    int unnoticed = 0;

    /// How many were read without any failure but held something else.
    int otherContent = 0;

    /// How many had an operation fail with each of SQLite's codes.
    std::map<int, int> codes;

private:
    void Tally(const Transcript& answers, const Transcript& undamaged);

    const TemporaryDirectory m_directory;
    const std::string m_path = m_directory.File("damaged.db");
    const std::string m_content;
    std::map<bool, Transcript> m_undamaged;
};

} // namespace Morvik::sql::tests
