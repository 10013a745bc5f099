#pragma once

#include <cstddef>
#include <functional>

/// Runs the job and returns the number of heap allocations that it made, SQLite's own left out: the program's operator
/// new is replaced for that. Callgrind counts the instructions between the start and the end of this function, which it
/// finds by its name; it stands in a file of its own so that the compiler leaves it as it is.
extern "C" std::size_t RunBudgetedJob(const std::function<void()>& job);
