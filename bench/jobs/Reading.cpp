#include "support/Jobs.h"

#include "contenders/Contenders.h"
#include "support/Databases.h"

namespace Morvik::sql::bench {

namespace {

// The rows are dropped outside of the time: both sides keep the same ones.
template <typename Contender>
void ReadAll(benchmark::State& state, int count)
{
    Contender contender(InMemory);
    Fill(contender, count);
    const Totals expected = Sum(SampleRows(count));
    for ([[maybe_unused]] auto round : state) {
        typename Contender::Rows rows;
        contender.Read(SelectAll, rows);
        state.PauseTiming();
        Require(Contender::SumOf(rows) == expected, "rows read", Contender::Name);
        rows = {};
        state.ResumeTiming();
    }
}

template <typename Contender, typename Walk>
void WalkAll(benchmark::State& state, int count, Walk walk)
{
    Contender contender(InMemory);
    Fill(contender, count);
    const Totals expected = Sum(SampleRows(count));
    for ([[maybe_unused]] auto round : state) {
        Require(walk(contender) == expected, "rows walked", Contender::Name);
    }
}

template <typename Contender>
void LookUp(benchmark::State& state, int count)
{
    Contender contender(InMemory);
    Fill(contender, count);
    const Totals expected = Sum(SampleRows(count));
    std::vector<typename Contender::Query> queries;
    for (int number = 0; number < count; ++number) {
        queries.push_back(Contender::MakeQuery(number));
    }
    for ([[maybe_unused]] auto round : state) {
        Require(contender.LookUp(queries) == expected, "rows looked up", Contender::Name);
    }
}

} // namespace

void RegisterReading()
{
    ForEachContender([]<typename Contender> {
        for (const int rows : {1'000, 10'000, 100'000}) {
            const std::string size = std::to_string(rows);
            RegisterJob("read/" + size, Contender::Name, IterationsFor(rows),
                        [=](benchmark::State& state) { ReadAll<Contender>(state, rows); });
            RegisterJob("walk/" + size, Contender::Name, IterationsFor(rows), [=](benchmark::State& state) {
                WalkAll<Contender>(state, rows, [](Contender& contender) { return contender.Walk(SelectAll); });
            });
        }
        RegisterJob("look up/1000", Contender::Name, 25,
                    [](benchmark::State& state) { LookUp<Contender>(state, 1000); });
    });
    for (const int rows : {1'000, 10'000, 100'000}) {
        RegisterJob("iterate/" + std::to_string(rows), Library::Name, IterationsFor(rows),
                    [=](benchmark::State& state) {
                        WalkAll<Library>(state, rows, [](Library& library) { return library.Iterate(SelectAll); });
                    });
    }
}

} // namespace Morvik::sql::bench
