#include "support/Jobs.h"

#include "contenders/Contenders.h"
#include "support/Databases.h"
#include "support/Transactions.h"

namespace Morvik::sql::bench {

namespace {

template <typename Contender>
void InsertBound(benchmark::State& state, int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    Contender contender(InMemory);
    contender.Execute(CreateTable);
    InTransactions(state, contender, [&] { contender.InsertBound(rows); });
    RequireWritten(contender, rows);
}

template <typename Contender>
void ReadColumns(benchmark::State& state, int times)
{
    Contender contender(InMemory);
    Fill(contender, 1000);
    const Totals expected = contender.ReadColumns(times);
    Require(expected.labels > 0 && contender.ReadColumns(1).measures == SampleRows(1)[0].measure, "columns read");
    for ([[maybe_unused]] auto round : state) {
        Require(contender.ReadColumns(times) == expected, "columns read", Contender::Name);
    }
}

} // namespace

void RegisterBinding()
{
    ForEachContender([]<typename Contender> {
        RegisterJob("bind/1000", Contender::Name, 100,
                    [](benchmark::State& state) { InsertBound<Contender>(state, 1000); });
        if constexpr (requires(Contender contender) { contender.ReadColumns(1); }) {
            RegisterJob("columns/1000", Contender::Name, 400,
                        [](benchmark::State& state) { ReadColumns<Contender>(state, 1000); });
        }
    });
}

} // namespace Morvik::sql::bench
