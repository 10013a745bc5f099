#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

/// Runs a program and kills it at `moment` after its start if it still runs; ChildResult::signal tells whether it was
/// killed.
ChildResult RunAndKill(const std::vector<std::string>& command, std::chrono::microseconds moment);

/// How long the program takes without being killed; throws std::runtime_error if its exit status is not 0.
std::chrono::microseconds DurationOf(const std::vector<std::string>& command);

/// Whether the last writer of a database in journal mode DELETE ended between its first write and its commit: then the
/// journal that undoes its changes exists.
bool LeftAJournal(const std::string& database);

} // namespace Morvik::sql::tests
