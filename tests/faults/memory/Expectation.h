#pragma once

#include <map>
#include <string>
#include <vector>

#include "Attempt.h"
#include "ContentCache.h"
#include "Scenario.h"

namespace Morvik::sql::tests {

/// What a scenario does when memory never fails, and the allowances for what it may do when memory fails. Every
/// allowance of a scenario must be used at least once: UnusedAllowances() returns the others.
class Expectation {
public:
    /// Runs the scenario twice on new files, so that the process also makes the allocations that it makes only once.
    /// Throws std::runtime_error if the scenario does not succeed.
    Expectation(const Scenario& scenario, Memory memory, const std::string& path, const std::string& fresh,
                ContentCache& contents);

    /// Check an attempt: what it reported, what it read, and what the file contains afterwards.
    void ExpectReport(const Attempt& attempt);
    void ExpectRead(const Attempt& attempt, const Subject& subject) const;
    void ExpectContent(const Attempt& attempt, const std::string& content);

    /// Repeats the scenario with the same objects after the attempt, while memory is available.
    void ExpectAgain(const Attempt& attempt, Subject& subject) const;

    /// Checks what the file contains after that repetition, given its content before.
    void ExpectContentAgain(const Attempt& attempt, const std::string& before, const std::string& content) const;

    std::vector<std::string> UnusedAllowances() const;

private:
    void Use(const std::string& allowance);
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

/// Writes the database file again with its content before the first attempt.
void StartAfresh(const std::string& path, const std::string& fresh);

} // namespace Morvik::sql::tests
