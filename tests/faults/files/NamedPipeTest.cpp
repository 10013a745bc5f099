#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>

#include "support/PlainSqlite.h"
#include "support/ScopedPermissions.h"
#include "support/ScopedWorkingDirectory.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;

constexpr int ForReading = SQLITE_OPEN_READONLY;
constexpr int ForWriting = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

// A named pipe. Opening one for reading waits until somebody writes to it; whoever is handed one in place of a database
// must not be stopped by it for good.
class NamedPipeDeathTest : public testing::Test {
protected:
    NamedPipeDeathTest()
    {
        if (mkfifo(path.c_str(), 0600) != 0) {
            throw std::runtime_error("no named pipe can be made at " + path);
        }
    }

    // The following run in a process of their own, which an alarm ends. The exit leaves out the leak check, for which
    // a process that has dropped root's rights may not be looked into.

    [[noreturn]] static void OpenAndExit(const std::string& pipe, bool readOnly)
    {
        alarm(20);
        DatabaseApi opening;
        opening.OpenDatabase(pipe, readOnly);
        std::cerr << opening.GetLastErrorMsg() << (opening.IsOpen() ? " and open" : " and closed");
        _exit(opening.GetLastError());
    }

    [[noreturn]] static void OpenPlainAndExit(const std::string& pipe, int flags)
    {
        alarm(1);
        _exit(FailureOfOpen(pipe, flags).code);
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("pipe.db");
    const std::string refusal = std::string(sqlite3_errstr(SQLITE_CANTOPEN)) + " and closed";
};

TEST_F(NamedPipeDeathTest, PipeOpenedForReadingIsRefusedAndNotWaitedFor)
{
    EXPECT_EXIT(OpenPlainAndExit(path, ForReading), testing::KilledBySignal(SIGALRM), "") << "plain SQLite waits";
    EXPECT_EXIT(OpenAndExit(path, true), testing::ExitedWithCode(SQLITE_CANTOPEN), refusal);

    EXPECT_TRUE(fs::is_fifo(path));
}

TEST_F(NamedPipeDeathTest, PipeThatMayOnlyBeReadIsRefusedAndNotWaitedFor)
{
    OpenToEverybody(directory.Path());
    const ScopedPermissions readable(path, ReadableFile);

    EXPECT_EXIT(OpenPlainAndExit(path, ForWriting), testing::KilledBySignal(SIGALRM), "") << "plain SQLite waits";
    EXPECT_EXIT(OpenAndExit(path, false), testing::ExitedWithCode(SQLITE_CANTOPEN), refusal);
}

TEST_F(NamedPipeDeathTest, PipeOpenedForWritingIsRefusedInTheSameWords)
{
    EXPECT_EXIT(OpenAndExit(path, false), testing::ExitedWithCode(SQLITE_CANTOPEN), refusal);
}

TEST_F(NamedPipeDeathTest, LinkToAPipeIsRefusedToo)
{
    const std::string link = directory.File("link.db");
    fs::create_symlink("pipe.db", link);

    EXPECT_EXIT(OpenAndExit(link, true), testing::ExitedWithCode(SQLITE_CANTOPEN), refusal);
}

// No directory is made for such a name, but it is a file's all the same.
TEST_F(NamedPipeDeathTest, PipeWhoseNameBeginsWithAColonIsRefusedToo)
{
    ASSERT_EQ(mkfifo(directory.File(":pipe").c_str(), 0600), 0);
    const ScopedWorkingDirectory here(directory.Path());

    EXPECT_EXIT(OpenAndExit(":pipe", true), testing::ExitedWithCode(SQLITE_CANTOPEN), refusal);
}

TEST_F(NamedPipeDeathTest, RefusedFacadeOpensAGoodFileAfterwards)
{
    const auto openBoth = [this] {
        alarm(20);
        DatabaseApi opening;
        const bool refused = !opening.OpenDatabase(path, true);
        _exit(refused && opening.OpenDatabase(directory.File("good.db"), false) ? EXIT_SUCCESS : EXIT_FAILURE);
    };

    EXPECT_EXIT(openBoth(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

} // namespace

} // namespace Morvik::sql::tests
