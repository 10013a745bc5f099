#include "Attempt.h"

#include <exception>
#include <new>
#include <ostream>

#include "support/OomInjector.h"
#include "support/SqliteOomInjector.h"

namespace Morvik::sql::tests {

namespace {

template <typename Failing>
Attempt Act(Course course, int succeeding, const Scenario& scenario, Subject& subject)
{
    Attempt attempt;
    const Failing failing(succeeding, course == Course::Once ? FailureExtent::Once : FailureExtent::ForEver);
    try {
        attempt.report = scenario.act(subject);
        attempt.outcome = attempt.report.Done() ? Outcome::Done : Outcome::Refused;
    } catch (const std::bad_alloc&) {
        attempt.outcome = Outcome::BadAlloc;
    } catch (const std::exception& other) {
        attempt.report = {false, 0, other.what()};
    }
    if (course == Course::UntilDestroyed) {
        subject.DestroyObjects();
    }
    attempt.fired = failing.Fired();
    return attempt;
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Attempt& attempt)
{
    static constexpr std::string_view Names[] = {"done", "refused", "std::bad_alloc", "another exception"};
    return stream << Names[static_cast<int>(attempt.outcome)] << ", code " << attempt.report.Code() << ", \""
                  << attempt.report.Message() << '"';
}

Attempt ActWithout(Memory memory, Course course, int succeeding, const Scenario& scenario, Subject& subject)
{
    return memory == Memory::OfSqlite ? Act<SqliteOomInjector>(course, succeeding, scenario, subject)
                                      : Act<OomInjector>(course, succeeding, scenario, subject);
}

} // namespace Morvik::sql::tests
