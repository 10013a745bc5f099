#include "support/Jobs.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

namespace Morvik::sql::bench {

namespace {

constexpr int LogEvery = 100;

int registered = 0;
int repetitions = 1;
int started = 0;

void ShowProgress()
{
    const int expected = registered * repetitions;
    ++started;
    if (isatty(STDERR_FILENO) != 0) {
        std::fprintf(stderr, "\rrun %d of %d%s", started, expected, started == expected ? "\n" : "");
    } else if (started % LogEvery == 0 || started == expected) {
        std::fprintf(stderr, "run %d of %d\n", started, expected);
    }
}

} // namespace

void ReadRepetitions(int argc, char** argv)
{
    static constexpr std::string_view Flag = "--benchmark_repetitions=";
    for (const std::string_view argument : std::span(argv, static_cast<std::size_t>(argc))) {
        if (argument.starts_with(Flag)) {
            repetitions = std::atoi(argument.data() + Flag.size());
        }
    }
}

void RegisterJob(const std::string& job, const char* contender, int iterations,
                 const std::function<void(benchmark::State&)>& run)
{
    const bool onlyOnce = std::getenv("TKOSQLLITE_BENCH_ONCE") != nullptr;
    ++registered;
    benchmark::RegisterBenchmark((job + '/' + contender).c_str(),
                                 [run](benchmark::State& state) {
                                     ShowProgress();
                                     run(state);
                                 })
        ->Iterations(onlyOnce ? 1 : iterations)
        ->Unit(benchmark::kMicrosecond);
}

int IterationsFor(int rows)
{
    return std::max(1, 100'000 / rows);
}

} // namespace Morvik::sql::bench
