#pragma once

#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

/// Runs a program and kills it at `moment` after its start if it still runs; ChildResult::signal tells whether it was
/// killed.
inline ChildResult RunAndKill(const std::vector<std::string>& command, std::chrono::microseconds moment)
{
    ChildProcess program(command);
    std::this_thread::sleep_for(moment);
    program.Signal(SIGKILL);
    return program.Wait();
}

/// How long the program takes without being killed; throws std::runtime_error if its exit status is not 0.
inline std::chrono::microseconds DurationOf(const std::vector<std::string>& command)
{
    const auto begin = std::chrono::steady_clock::now();
    const ChildResult result = RunChild(command);
    const auto end = std::chrono::steady_clock::now();
    if (result.status != 0) {
        throw std::runtime_error(command.back() + " failed: " + result.err);
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(end - begin);
}

/// Whether the last writer of a database in journal mode DELETE ended between its first write and its commit: then the
/// journal that undoes its changes exists.
inline bool LeftAJournal(const std::string& database)
{
    std::error_code absent;
    return std::filesystem::file_size(database + "-journal", absent) > 0 && !absent;
}

} // namespace Morvik::sql::tests
