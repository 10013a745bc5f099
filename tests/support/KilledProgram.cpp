#include "support/KilledProgram.h"

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace Morvik::sql::tests {

ChildResult RunAndKill(const std::vector<std::string>& command, std::chrono::microseconds moment)
{
    ChildProcess program(command);
    std::this_thread::sleep_for(moment);
    program.Signal(SIGKILL);
    return program.Wait();
}

std::chrono::microseconds DurationOf(const std::vector<std::string>& command)
{
    const auto begin = std::chrono::steady_clock::now();
    const ChildResult result = RunChild(command);
    const auto end = std::chrono::steady_clock::now();
    if (result.status != 0) {
        throw std::runtime_error(command.back() + " failed: " + result.err);
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(end - begin);
}

bool LeftAJournal(const std::string& database)
{
    std::error_code absent;
    return std::filesystem::file_size(database + "-journal", absent) > 0 && !absent;
}

} // namespace Morvik::sql::tests
