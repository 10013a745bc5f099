#pragma once

#include <iosfwd>
#include <string_view>
#include <utility>

#include "Scenario.h"

namespace Morvik::sql::tests {

/// Which allocator fails.
enum class Memory { OfSqlite, OfNew };

/// What happens after the first allocation that fails.
enum class Course {
    /// The next allocations succeed; then the scenario is repeated.
    Once,

    /// The next allocations also fail until the scenario ends; then it is repeated.
    ForEver,

    /// The next allocations also fail until every object is destroyed.
    UntilDestroyed
};

constexpr std::pair<Course, const char*> Courses[] = {
    {Course::Once, "once"}, {Course::ForEver, "forEver"}, {Course::UntilDestroyed, "untilDestroyed"}};

enum class Outcome { Done, Refused, BadAlloc, OtherException };

/// The result of a scenario while memory fails.
struct Attempt {
    Outcome outcome = Outcome::OtherException;
    Report report;

    /// Whether an allocation was requested that had to fail.
    bool fired = false;
};

std::ostream& operator<<(std::ostream& stream, const Attempt& attempt);

/// Runs the scenario while memory fails after `succeeding` allocations.
Attempt ActWithout(Memory memory, Course course, int succeeding, const Scenario& scenario, Subject& subject);

} // namespace Morvik::sql::tests
