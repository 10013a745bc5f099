#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

/// Runs a program and kills it at `moment` after its start, if it still runs then: ChildResult::signal tells.
ChildResult RunAndKill(const std::vector<std::string>& command, std::chrono::microseconds moment);

/// How long a program runs to its end; throws std::runtime_error if it does not end with 0.
std::chrono::microseconds DurationOf(const std::vector<std::string>& command);

/// Whether the last writer of a database with a deleted journal ended between its first write and its commit: the
/// journal that takes its changes back is there.
bool LeftAJournal(const std::string& database);

} // namespace Morvik::sql::tests
