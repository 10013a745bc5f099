#pragma once

#include <map>
#include <string>
#include <vector>

#include "Attempt.h"
#include "KnownContents.h"
#include "Scenario.h"

namespace Morvik::sql::tests {

/// What a scenario does where memory never fails, and what it may do where memory fails. Every licence that a scenario
/// claims must be used at least once: UnusedLicences() names the others.
class Expectation {
public:
    /// Does the scenario twice on fresh files, in which course the process also makes what it makes once. Throws
    /// std::runtime_error if the scenario does not succeed.
    Expectation(const Scenario& scenario, Memory memory, const std::string& path, const std::string& fresh,
                KnownContents& contents);

    /// Judge an attempt by what it reported, by what it read, and by what the file holds then.
    void ExpectReport(const Attempt& attempt);
    void ExpectRead(const Attempt& attempt, const Subject& subject) const;
    void ExpectContent(const Attempt& attempt, const std::string& content);

    /// Does the scenario again with the same objects after the attempt, memory being there.
    void ExpectAgain(const Attempt& attempt, Subject& subject) const;

    /// Judges what the file holds after that, from what it held before.
    void ExpectContentAgain(const Attempt& attempt, const std::string& before, const std::string& content) const;

    std::vector<std::string> UnusedLicences() const;

private:
    void Use(const std::string& licence);
    bool MayReport(const Attempt& attempt);
    bool MayRefuseWith(const Report& report);

    const Scenario& m_scenario;
    Memory m_memory;

    std::string m_before;
    std::string m_once;
    std::string m_twice;
    std::vector<std::string> m_afterFirstSteps;
    std::string m_readOnce;
    std::string m_readTwice;
    std::vector<std::vector<std::string>> m_rowsOnce;

    std::map<std::string, bool> m_used;
};

/// Writes the database file anew, as it was before the first attempt.
void StartAfresh(const std::string& path, const std::string& fresh);

} // namespace Morvik::sql::tests
