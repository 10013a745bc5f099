#pragma once

#include <exception>
#include <new>
#include <string_view>

#include "Scenario.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

/// How long allocations continue to fail after the first one that fails.
enum class Course {
    /// The next allocations succeed; then the scenario is repeated.
    Once,

    /// The next allocations also fail until the scenario ends; then it is repeated.
    ForEver,

    /// The next allocations also fail until every object is destroyed.
    UntilDestroyed
};

inline constexpr std::string_view Done = "done";
inline constexpr std::string_view Failed = "failed";
inline constexpr std::string_view BadAlloc = "std::bad_alloc";
inline constexpr std::string_view OtherException = "another exception";

/// The result of a scenario while memory fails.
struct Attempt {
    std::string_view outcome = OtherException;
    Report report;

    /// Whether the allocation that had to fail was requested.
    bool fired = false;
};

/// Runs the scenario while memory fails after `succeeding` allocations.
inline Attempt ActWithout(Memory memory, Course course, int succeeding, const Scenario& scenario, Subject& subject)
{
    Attempt attempt;
    const OomInjector failing(succeeding, course == Course::Once ? FailureExtent::Once : FailureExtent::ForEver,
                              memory);
    try {
        attempt.report = scenario.act(subject);
        attempt.outcome = attempt.report.Done() ? Done : Failed;
    } catch (const std::bad_alloc&) {
        attempt.outcome = BadAlloc;
    } catch (const std::exception& other) {
        attempt.report = {false, 0, other.what()};
    }
    if (course == Course::UntilDestroyed) {
        subject.DestroyObjects();
    }
    attempt.fired = failing.Fired();
    return attempt;
}

} // namespace Morvik::sql::tests
