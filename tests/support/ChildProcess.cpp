#include "support/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace Morvik::sql::tests {

namespace {

class FileActions {
public:
    FileActions() { Check(posix_spawn_file_actions_init(&m_actions)); }
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void Open(int descriptor, const std::string& path, int flags)
    {
        Check(posix_spawn_file_actions_addopen(&m_actions, descriptor, path.c_str(), flags, 0600));
    }

    void ChangeDirectory(const std::string& path)
    {
        Check(posix_spawn_file_actions_addchdir_np(&m_actions, path.c_str()));
    }

    const posix_spawn_file_actions_t* Get() const { return &m_actions; }

private:
    static void Check(int error)
    {
        if (error != 0) {
            throw std::system_error(error, std::generic_category(), "posix_spawn_file_actions");
        }
    }

    posix_spawn_file_actions_t m_actions{};
};

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const Settings& settings)
{
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str())); // posix_spawn does not change the arguments
    }
    pointers.push_back(nullptr);

    // If the child is killed before it opens its files, the output is empty.
    std::ofstream(m_files.File("out")).close();
    std::ofstream(m_files.File("err")).close();

    FileActions actions;
    actions.Open(STDIN_FILENO, "/dev/null", O_RDONLY);
    actions.Open(STDOUT_FILENO, settings.output.empty() ? m_files.File("out") : settings.output, O_WRONLY | O_CREAT);
    actions.Open(STDERR_FILENO, m_files.File("err"), O_WRONLY | O_CREAT);
    if (!settings.directory.empty()) {
        actions.ChangeDirectory(settings.directory);
    }
    const int error = posix_spawnp(&m_id, pointers.front(), actions.Get(), nullptr, pointers.data(), environ);
    if (error != 0) {
        m_id = -1;
        throw std::system_error(error, std::generic_category(), arguments.front());
    }
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
    if (kill(m_id, signal) != 0) {
        throw std::system_error(errno, std::generic_category(), "kill");
    }
}

ChildResult ChildProcess::Wait()
{
    int ending = 0;
    pid_t ended = -1;
    do {
        ended = waitpid(m_id, &ending, 0);
    } while (ended < 0 && errno == EINTR);
    if (ended < 0) {
        throw std::system_error(errno, std::generic_category(), "waitpid");
    }
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

ChildResult RunChild(const std::vector<std::string>& arguments)
{
    return ChildProcess(arguments).Wait();
}

ChildResult RunChild(const std::vector<std::string>& arguments, const ChildProcess::Settings& settings)
{
    return ChildProcess(arguments, settings).Wait();
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
