#include <memory>
#include <type_traits>

#include "contenders/Contenders.h"
#include "support/Databases.h"
#include "support/Jobs.h"

namespace Morvik::sql::bench {

namespace {

constexpr int Count = 1000;

// The input of a contender: columns if it binds those faster than rows.
template <typename Contender>
auto MakeBound(const std::vector<SampleRow>& rows)
{
    if constexpr (requires { typename Contender::Columns; }) {
        return typename Contender::Columns(rows);
    } else {
        return rows;
    }
}

template <typename Contender, typename Insert>
Task BindTask(Insert insert)
{
    const auto database = std::make_shared<Fresh<Contender>>(false);
    const std::vector<SampleRow> rows = SampleRows(Count);
    return {[=] { database->Begin(); }, [=, bound = MakeBound<Contender>(rows)] { insert(database->Get(), bound); },
            [=] { database->RequireCommitted(rows); }};
}

template <typename Contender>
Task ReadColumnsTask()
{
    const auto contender = std::make_shared<Contender>(InMemory);
    Fill(*contender, Count);
    const auto totals = std::make_shared<Totals>();
    Totals expected;
    for (int i = 0; i < Count; ++i) {
        expected += Sum(SampleRows(1));
    }
    return {[] {}, [=] { *totals = contender->ReadColumns(Count); },
            [=] { Require(*totals == expected, "columns read", Contender::Name); }};
}

} // namespace

void AddBinding(Jobs& jobs)
{
    ForEachContender([&]<typename Contender> {
        // The contender Library binds in the same way as LibraryPrepared.
        if constexpr (Writer<Contender> && !std::is_same_v<Contender, LibraryPrepared> &&
                      requires(Contender contender) {
                          contender.InsertBound(MakeBound<Contender>(std::vector<SampleRow>()));
                      }) {
            const auto insert = [](Contender& contender, const auto& bound) { contender.InsertBound(bound); };
            jobs.Add("bind", Count, RepeatsFor(Count), Contender::Name, [=] { return BindTask<Contender>(insert); });
        }
        if constexpr (requires(Contender contender) { contender.ReadColumns(1); }) {
            jobs.Add("columns", Count, RepeatsFor(Count), Contender::Name, ReadColumnsTask<Contender>);
        }
    });
    const auto insertStatic = [](RawSqlite& c, const auto& bound) { c.InsertBoundStatic(bound); };
    jobs.Add("bind", Count, RepeatsFor(Count), "C, static", [=] { return BindTask<RawSqlite>(insertStatic); });
}

} // namespace Morvik::sql::bench
