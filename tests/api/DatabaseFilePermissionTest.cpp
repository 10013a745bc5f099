#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "support/PlainSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;

// Permission bits stop everybody but root, so what is tried runs in a child process that is not root any more.

constexpr uid_t Nobody = 65534;

/// What a test's child says on its way out: the result, the code and the message.
std::string Told(bool result, int code, const std::string& message)
{
    return std::string(result ? "true" : "false") + ", " + std::to_string(code) + ", \"" + message + "\"";
}

void StopBeingRoot()
{
    if (geteuid() == 0 && (setgid(Nobody) != 0 || setuid(Nobody) != 0)) {
        std::_Exit(1);
    }
}

[[noreturn]] void OpenAndWrite(const std::string& path, bool readOnly, const std::string& sql)
{
    StopBeingRoot();
    DatabaseApi database;
    bool result = database.OpenDatabase(path, readOnly);
    std::cerr << Told(result, database.GetLastError(), database.GetLastErrorMsg());
    if (result && !sql.empty()) {
        result = database.Execute(sql);
        std::cerr << "; " << Told(result, database.GetLastError(), database.GetLastErrorMsg());
    }
    std::_Exit(0);
}

class DatabaseFilePermissionTest : public testing::Test {
protected:
    DatabaseFilePermissionTest()
    {
        PlainSqlite(path).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1)");
        // Anybody may look at what is here, nobody but root may change it.
        chmod(path.c_str(), 0444);
        chmod(directory.Path().c_str(), 0555);
    }
    ~DatabaseFilePermissionTest() override { chmod(directory.Path().c_str(), 0755); }

    void ExpectNothingLost()
    {
        chmod(directory.Path().c_str(), 0755);
        chmod(path.c_str(), 0644);
        EXPECT_EQ(PlainSqlite(path).Value("SELECT group_concat(a) FROM t"), "'1'");
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
};

TEST_F(DatabaseFilePermissionTest, FileInADirectoryClosedToWritersCannotBeMade)
{
    const std::string missing = directory.File("missing.db");

    EXPECT_EXIT(OpenAndWrite(missing, false, ""), testing::ExitedWithCode(0),
                HasSubstr(Told(false, SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN))));
}

TEST_F(DatabaseFilePermissionTest, DirectoryInADirectoryClosedToWritersCannotBeMade)
{
    const std::string missing = directory.File("missing/x.db");

    EXPECT_EXIT(OpenAndWrite(missing, false, ""), testing::ExitedWithCode(0),
                HasSubstr(Told(false, 111, "Create directory failed: " + missing)));
    EXPECT_EXIT(OpenAndWrite(missing, true, ""), testing::ExitedWithCode(0),
                HasSubstr(Told(false, 111, "Create directory failed: " + missing)));
}

TEST_F(DatabaseFilePermissionTest, DirectoryThatCannotBeLookedIntoIsNamedByTheDatabase)
{
    const std::string hidden = directory.File("inner/x.db");
    chmod(directory.Path().c_str(), 0);

    EXPECT_EXIT(OpenAndWrite(hidden, true, ""), testing::ExitedWithCode(0),
                HasSubstr(Told(false, 111, "Create directory failed: " + hidden)));
}

TEST_F(DatabaseFilePermissionTest, FileThatMayOnlyBeReadIsNotWritten)
{
    EXPECT_EXIT(OpenAndWrite(path, false, "INSERT INTO t VALUES (2)"), testing::ExitedWithCode(0),
                HasSubstr(Told(true, 0, "") + "; " + Told(false, SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY))));
    EXPECT_EXIT(OpenAndWrite(path, true, "SELECT a FROM t"), testing::ExitedWithCode(0),
                HasSubstr(Told(true, 0, "") + "; " + Told(true, 0, "")));

    ExpectNothingLost();
}

TEST_F(DatabaseFilePermissionTest, FileThatMayNotBeReadCannotBeOpened)
{
    chmod(path.c_str(), 0);

    for (const bool readOnly : {false, true}) {
        EXPECT_EXIT(OpenAndWrite(path, readOnly, ""), testing::ExitedWithCode(0),
                    HasSubstr(Told(false, SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN))));
    }

    ExpectNothingLost();
}

} // namespace

} // namespace Morvik::sql::tests
