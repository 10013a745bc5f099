#include "support/Jobs.h"

#include <algorithm>
#include <cstdio>

namespace Morvik::sql::bench {

namespace {

int registered = 0;
int started = 0;

void ShowProgress()
{
    std::fprintf(stderr, "\r%d runs of %d jobs", ++started, registered);
    std::fflush(stderr);
}

} // namespace

void RegisterJob(const std::string& job, const char* contender, int iterations,
                 const std::function<void(benchmark::State&)>& run)
{
    ++registered;
    benchmark::RegisterBenchmark((job + '/' + contender).c_str(),
                                 [run](benchmark::State& state) {
                                     ShowProgress();
                                     run(state);
                                 })
        ->Iterations(iterations)
        ->Unit(benchmark::kMicrosecond);
}

int IterationsFor(int rows)
{
    return std::max(1, 100'000 / rows);
}

} // namespace Morvik::sql::bench
