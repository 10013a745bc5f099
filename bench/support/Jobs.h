#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace Morvik::sql::bench {

/// Registers one job of one contender as "job/contender". Each of its runs repeats the job `iterations` times, so that
/// the number of runs is known beforehand and a line on the standard error stream can show how far the whole is.
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
