#pragma once

#include <cstddef>
#include <functional>

/// Runs the job and returns the number of heap allocations that it made, without SQLite's: the program's operator new
/// is replaced to count them. Instructions are counted between the entry and the return of this function, which the
/// counters find by its name. It is in a separate file so that the compiler does not inline it.
extern "C" std::size_t RunBudgetedJob(const std::function<void()>& job);
