#pragma once

#include <iosfwd>
#include <string_view>
#include <utility>

#include "Scenario.h"

namespace Morvik::sql::tests {

/// Whose memory fails.
enum class Memory { OfSqlite, OfNew };

/// What happens after the first allocation that fails.
enum class Course {
    /// The next ones succeed; then the scenario is done again.
    Once,

    /// They fail too, until the scenario is over; then it is done again.
    ForEver,

    /// They fail too, until every object is destroyed.
    UntilDestroyed
};

constexpr std::pair<Course, const char*> Courses[] = {
    {Course::Once, "once"}, {Course::ForEver, "forEver"}, {Course::UntilDestroyed, "untilDestroyed"}};

enum class Outcome { Done, Refused, BadAlloc, OtherException };

/// How a scenario ended in failing memory.
struct Attempt {
    Outcome outcome = Outcome::OtherException;
    Report report;

    /// Whether an allocation was asked for that had to fail.
    bool fired = false;
};

std::ostream& operator<<(std::ostream& stream, const Attempt& attempt);

/// Acts the scenario while memory fails after so many allocations that succeed.
Attempt ActWithout(Memory memory, Course course, int succeeding, const Scenario& scenario, Subject& subject);

} // namespace Morvik::sql::tests
