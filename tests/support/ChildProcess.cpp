#include "support/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Morvik::sql::tests {

namespace {

void ThrowOnError(int error, const std::string& what)
{
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), what);
    }
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const ChildSettings& settings)
{
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str())); // posix_spawn does not change the arguments
    }
    pointers.push_back(nullptr);

    // If the child is killed before it opens its files, the output is empty.
    std::ofstream(m_files.File("out")).close();
    std::ofstream(m_files.File("err")).close();

    posix_spawn_file_actions_t actions{};
    ThrowOnError(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
    const auto destroy = [](posix_spawn_file_actions_t* owned) { posix_spawn_file_actions_destroy(owned); };
    const std::unique_ptr<posix_spawn_file_actions_t, decltype(destroy)> owner(&actions, destroy);
    const auto open = [&](int descriptor, const std::string& path, int flags) {
        ThrowOnError(posix_spawn_file_actions_addopen(&actions, descriptor, path.c_str(), flags, 0600), path);
    };
    open(STDIN_FILENO, "/dev/null", O_RDONLY);
    open(STDOUT_FILENO, settings.output.empty() ? m_files.File("out") : settings.output, O_WRONLY | O_CREAT);
    open(STDERR_FILENO, m_files.File("err"), O_WRONLY | O_CREAT);
    if (!settings.directory.empty()) {
        ThrowOnError(posix_spawn_file_actions_addchdir_np(&actions, settings.directory.c_str()), settings.directory);
    }
    pid_t id = -1;
    ThrowOnError(posix_spawnp(&id, pointers.front(), &actions, nullptr, pointers.data(), environ), arguments.front());
    m_id = id;
}

ChildProcess::~ChildProcess()
{
    if (m_id > 0) {
        kill(m_id, SIGKILL);
        waitpid(m_id, nullptr, 0);
    }
}

void ChildProcess::Signal(int signal)
{
    ThrowOnError(kill(m_id, signal) == 0 ? 0 : errno, "kill");
}

ChildResult ChildProcess::Wait()
{
    int ending = 0;
    pid_t ended = -1;
    do {
        ended = waitpid(m_id, &ending, 0);
    } while (ended < 0 && errno == EINTR);
    ThrowOnError(ended < 0 ? errno : 0, "waitpid");
    m_id = -1;

    ChildResult result;
    if (WIFEXITED(ending)) {
        result.status = WEXITSTATUS(ending);
    } else {
        result.signal = WTERMSIG(ending);
    }
    result.err = FileContent(m_files.File("err"));
    result.out = FileContent(m_files.File("out"));
    return result;
}

ChildResult RunAndKill(const std::vector<std::string>& arguments, std::chrono::microseconds moment)
{
    ChildProcess program(arguments);
    std::this_thread::sleep_for(moment);
    program.Signal(SIGKILL);
    return program.Wait();
}

std::chrono::microseconds DurationOf(const std::vector<std::string>& arguments)
{
    const auto begin = std::chrono::steady_clock::now();
    const ChildResult result = RunChild(arguments);
    const auto end = std::chrono::steady_clock::now();
    if (result.status != 0) {
        throw std::runtime_error(arguments.back() + " failed: " + result.err);
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(end - begin);
}

std::string FileContent(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return content.str();
}

} // namespace Morvik::sql::tests
