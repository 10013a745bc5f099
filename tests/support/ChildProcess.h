#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// How a child process ended and what it wrote.
struct ChildResult {
    /// The exit status, or -1 when a signal ended it.
    int status = -1;

    /// The signal that ended it, or 0.
    int signal = 0;

    std::string out;
    std::string err;
};

/// A program that runs beside the test, with nothing to read on its standard input. Failures to start it and to look
/// after it throw std::runtime_error. A child that still runs at the end of the object's life is killed.
class ChildProcess {
public:
    struct Settings {
        /// The child's working directory; empty for the test's own.
        std::string directory{};

        /// Where its standard output goes; empty to keep it for the result.
        std::string output{};
    };

    /// Starts `arguments`, the first of which is the program, looked up in PATH if it is a bare name.
    explicit ChildProcess(const std::vector<std::string>& arguments) : ChildProcess(arguments, Settings()) {}
    ChildProcess(const std::vector<std::string>& arguments, const Settings& settings);
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Sends a signal; a child that has ended already does not mind.
    void Signal(int signal);

    /// Waits for the end, which is to be asked for once.
    ChildResult Wait();

private:
    TemporaryDirectory m_files;
    pid_t m_id = -1;
};

/// Runs a program to its end.
ChildResult RunChild(const std::vector<std::string>& arguments);
ChildResult RunChild(const std::vector<std::string>& arguments, const ChildProcess::Settings& settings);

/// The content of a file; throws std::runtime_error if it cannot be read.
std::string FileContent(const std::string& path);

} // namespace Morvik::sql::tests
