#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace Morvik::sql::bench {

/// Takes the number of repetitions from the program's arguments, for the line that shows how far the whole is. To be
/// called before the arguments are taken over by the benchmark.
void ReadRepetitions(int argc, char** argv);

/// Registers one job of one contender as "job/contender". Each of its runs repeats the job `iterations` times, so that
/// the number of runs is known beforehand; without a filter on the jobs, a line on the standard error stream shows how
/// far the whole is. Where the environment sets TKOSQLLITE_BENCH_ONCE, every job is done just once: its result is
/// checked, its time says nothing.
void RegisterJob(const std::string& job, const char* contender, int iterations,
                 const std::function<void(benchmark::State&)>& run);

/// How often to repeat a job on that many rows for a run to last some hundredth parts of a second.
int IterationsFor(int rows);

/// Every file of jobs has one such function.
void RegisterBinding();
void RegisterOpening();
void RegisterReading();
void RegisterWriting();

} // namespace Morvik::sql::bench
