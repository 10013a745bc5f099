#include "contenders/Contenders.h"
#include "memory/CountedMemory.h"
#include "support/Databases.h"
#include "support/Jobs.h"

#include <string>

namespace Morvik::sql::bench {

namespace {

// What the contender was given to write counts only where it is text that somebody has to make: then as its size.
template <typename Contender>
std::size_t SizeOfText(const typename Contender::Write& write)
{
    if constexpr (std::is_same_v<typename Contender::Write, std::string>) {
        return write.size();
    } else {
        return 0;
    }
}

template <typename Contender>
void PeakOfWriting(benchmark::State& state, int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    const typename Contender::Write write = Contender::MakeWrite(rows);
    Contender contender(InMemory);
    contender.Execute(CreateTable);
    std::size_t peak = 0;
    for ([[maybe_unused]] auto round : state) {
        const CountedMemory memory;
        contender.Insert(write);
        peak = memory.Peak();
    }
    Require(peak > InsertText(rows).size(), "the rows' memory was not counted", Contender::Name);
    RequireWritten(contender, rows);
    state.counters["peak"] = static_cast<double>(peak + SizeOfText<Contender>(write));
    state.counters["text"] = static_cast<double>(InsertText(rows).size());
}

} // namespace

} // namespace Morvik::sql::bench

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    bench::CountedMemory::CountSqlite();
    bench::ReadRepetitions(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    bench::ForEachContender([]<typename Contender> {
        bench::RegisterJob("peak memory/100000", Contender::Name, 1,
                           [](benchmark::State& state) { bench::PeakOfWriting<Contender>(state, 100'000); });
    });
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
