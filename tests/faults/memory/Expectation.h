#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Scenario.h"
#include "faults/ContentCache.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

/// What happens after the first allocation that fails.
enum class Course {
    /// The next allocations succeed; then the scenario is repeated.
    Once,

    /// The next allocations also fail until the scenario ends; then it is repeated.
    ForEver,

    /// The next allocations also fail until every object is destroyed.
    UntilDestroyed
};

enum class Outcome { Done, Failed, BadAlloc, OtherException };

/// The result of a scenario while memory fails.
struct Attempt {
    Outcome outcome = Outcome::OtherException;
    Report report;

    /// Whether the allocation that had to fail was requested.
    bool fired = false;
};

std::ostream& operator<<(std::ostream& stream, const Attempt& attempt);

/// Runs the scenario while memory fails after `succeeding` allocations.
Attempt ActWithout(Memory memory, Course course, int succeeding, const Scenario& scenario, Subject& subject);

/// What a scenario does when memory never fails, and the allowances for what it may do when memory fails. Every
/// allowance of a scenario must be used at least once: UnusedAllowances() returns the others.
class Expectation {
public:
    /// Runs the scenario twice on new files, so that the process also makes the allocations that it makes only once.
    /// Throws std::runtime_error if the scenario does not succeed.
    Expectation(const Scenario& scenario, Memory memory, const std::string& path, const DatabaseFiles& fresh,
                ContentCache& contents);

    /// Check an attempt: what it reported, what it read, and what the file contains afterwards.
    void ExpectReport(const Attempt& attempt);
    void ExpectRead(const Attempt& attempt, const Subject& subject) const;
    void ExpectContent(const Attempt& attempt, const DatabaseContent& content);

    /// Repeats the scenario with the same objects after the attempt, while memory is available.
    void ExpectAgain(const Attempt& attempt, Subject& subject) const;

    /// Checks what the file contains after ExpectAgain(); `before` is its content before ExpectAgain().
    void ExpectContentAgain(const Attempt& attempt, const DatabaseContent& before,
                            const DatabaseContent& content) const;

    std::vector<std::string> UnusedAllowances() const;

private:
    bool MayReport(const Attempt& attempt);
    bool MayFailWith(const Report& report);

    /// Notes that an allowance is used, and returns whether the scenario has it.
    bool Use(const std::string& allowance);

    const Scenario& m_scenario;
    const Memory m_memory;

    DatabaseContent m_before;
    DatabaseContent m_once;
    DatabaseContent m_twice;
    std::optional<DatabaseContent> m_afterFirstStep;
    std::string m_readOnce;
    std::string m_readTwice;
    std::vector<std::vector<std::string>> m_rowsOnce;

    std::map<std::string, bool> m_used;
};

} // namespace Morvik::sql::tests
