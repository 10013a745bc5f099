#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// How a child process ended, and its output.
struct ChildResult {
    /// The exit status, or -1 if a signal ended the process.
    int status = -1;

    /// The signal that ended it, or 0.
    int signal = 0;

    std::string out;
    std::string err;
};

struct ChildSettings {
    /// The child's working directory; empty for that of the test.
    std::string directory{};

    /// The file for its standard output; empty to keep the output for the result.
    std::string output{};
};

/// A program that runs in parallel with the test; its standard input is empty. Errors in starting it or waiting for it
/// throw std::runtime_error. If the child still runs when the object is destroyed, it is killed.
class ChildProcess {
public:
    /// Starts `arguments`, the first of which is the program, looked up in PATH if it is a bare name.
    explicit ChildProcess(const std::vector<std::string>& arguments, const ChildSettings& settings = {});
    ~ChildProcess();

    /// Sends a signal; does nothing if the child has ended.
    void Signal(int signal);

    /// Waits for the end; may be called only once.
    ChildResult Wait();

private:
    TemporaryDirectory m_files;
    pid_t m_id = -1;
};

/// Runs a program to its end.
inline ChildResult RunChild(const std::vector<std::string>& arguments, const ChildSettings& settings = {})
{
    return ChildProcess(arguments, settings).Wait();
}

/// Runs a program and kills it at `moment` after its start if it still runs; ChildResult::signal tells whether it was
/// killed.
ChildResult RunAndKill(const std::vector<std::string>& arguments, std::chrono::microseconds moment);

/// How long a program takes to its end; throws std::runtime_error if its exit status is not 0.
std::chrono::microseconds DurationOf(const std::vector<std::string>& arguments);

/// The content of a file; throws std::runtime_error if it cannot be read.
std::string FileContent(const std::string& path);

} // namespace Morvik::sql::tests
