#include <cstddef>
#include <memory>
#include <vector>

#include "contenders/Contenders.h"
#include "support/Databases.h"
#include "support/Jobs.h"

namespace Morvik::sql::bench {

namespace {

// The rows of the previous run are destroyed outside the measured time.
template <typename Contender>
Task ReadTask(int count)
{
    const auto contender = std::make_shared<Contender>(InMemory);
    Fill(*contender, count);
    const auto rows = std::make_shared<typename Contender::Rows>();
    return {[=] { *rows = {}; }, [=] { contender->Read(SelectAll, *rows); },
            [=] { Require(Contender::SumOf(*rows) == Sum(SampleRows(count)), "rows read", Contender::Name); }};
}

// `expected(count)` are the rows that the contender walks.
template <typename Contender>
Task WalkTask(int count, auto walk, std::vector<SampleRow> (*expected)(int) = SampleRows)
{
    const auto contender = std::make_shared<Contender>(InMemory);
    Fill(*contender, count);
    const auto totals = std::make_shared<Totals>();
    return {[] {}, [=] { *totals = walk(*contender); },
            [=] { Require(*totals == Sum(expected(count)), "rows walked", Contender::Name); }};
}

template <typename Contender>
Task LookUpTask(int count)
{
    std::vector<typename Contender::Query> queries;
    for (int number = 0; number < count; ++number) {
        queries.push_back(Contender::MakeQuery(number));
    }
    return WalkTask<Contender>(count, [=](Contender& contender) { return contender.LookUp(queries); });
}

// Reads the columns of the first row again and again.
template <typename Contender>
Task ReadColumnsTask(int times)
{
    return WalkTask<Contender>(
        times, [=](Contender& contender) { return contender.ReadColumns(times); },
        [](int count) { return std::vector(static_cast<std::size_t>(count), SampleRows(1).front()); });
}

template <typename Contender>
void AddReading(Jobs& jobs, int count)
{
    jobs.Add("read", count, RepeatsFor(count), Contender::Name, [=] { return ReadTask<Contender>(count); });
    jobs.Add("walk", count, RepeatsFor(count), Contender::Name, [=] {
        return WalkTask<Contender>(count, [](Contender& contender) { return contender.Walk(SelectAll); });
    });
    if constexpr (requires(Contender contender) { contender.Iterate(SelectAll); }) {
        jobs.Add("walk", count, RepeatsFor(count), "iterator", [=] {
            return WalkTask<Contender>(count, [](Contender& contender) { return contender.Iterate(SelectAll); });
        });
    }
}

} // namespace

void AddReading(Jobs& jobs)
{
    ForEachContender([&]<typename Contender> {
        if constexpr (requires { typename Contender::Rows; }) {
            for (const int count : {1'000, 10'000, 100'000}) {
                AddReading<Contender>(jobs, count);
            }
            jobs.Add("look up", 1000, 3, Contender::Name, [] { return LookUpTask<Contender>(1000); });
        }
        if constexpr (requires(Contender contender) { contender.ReadColumns(1); }) {
            jobs.Add("columns", 1000, 10, Contender::Name, [] { return ReadColumnsTask<Contender>(1000); });
        }
    });
    AddReading<Library>(jobs, 1'000'000);
    AddReading<RawSqlite>(jobs, 1'000'000);
}

} // namespace Morvik::sql::bench
