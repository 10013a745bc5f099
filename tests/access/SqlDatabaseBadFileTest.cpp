#include <sql/SqlDatabase.h>

#include <sql/SqlCommand.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/ScopedPermissions.h"
#include "support/SqliteCallRecorder.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

constexpr int ForWriting = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

std::string BytesOfFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Files that SQLite rejects when they are opened or first used. Its error is passed on, and the files keep their
// content.
class SqlDatabaseBadFileTest : public testing::Test {
protected:
    void MakeTableWithOneRow() { RawSqlite(path).Execute("CREATE TABLE t(a); INSERT INTO t VALUES (7)"); }
    std::string CountedRows() const { return RawSqlite(path).Value("SELECT count(*) || ':' || max(a) FROM t"); }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    SqlDatabase database;
};

TEST_F(SqlDatabaseBadFileTest, MissingFileIsNotCreatedForReading)
{
    const bool opened = database.Open(path, true);

    EXPECT_FALSE(opened);
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path, SQLITE_OPEN_READONLY).message));
    EXPECT_FALSE(fs::exists(path));
}

// The test holds the other end of the pipe open, so that nothing waits for it.
TEST_F(SqlDatabaseBadFileTest, NamedPipeIsOpenedByTheCallersPathAndFails)
{
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int otherEnd = open(path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(otherEnd, 0);
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.Open(path, false));

    EXPECT_THAT(sqlite.CallsOf("sqlite3_open_v2"), ElementsAre("sqlite3_open_v2(" + path + ", 6, null)"));
    EXPECT_THAT(database, HasError(SQLITE_IOERR, "disk I/O error"));
    close(otherEnd);
}

TEST_F(SqlDatabaseBadFileTest, FileInPlaceOfTheDirectoryIsLeftToSqliteToRefuse)
{
    std::ofstream(directory.File("file")) << "content";

    const bool opened = database.Open(directory.File("file/test.db"), false);

    EXPECT_FALSE(opened);
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(directory.File("file/test.db"), ForWriting).message));
    EXPECT_NE(database.GetLastErrorMsg(), "");
    EXPECT_FALSE(database.IsOpen());
    EXPECT_EQ(BytesOfFile(directory.File("file")), "content");
}

TEST_F(SqlDatabaseBadFileTest, DirectoryIsNoDatabase)
{
    fs::create_directory(path);
    const RawFailure plain = FailureOfOpen(path, ForWriting);

    const bool opened = database.Open(path, false);

    EXPECT_FALSE(opened);
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, plain.message));
    EXPECT_EQ(plain.code, SQLITE_CANTOPEN);
    EXPECT_TRUE(fs::is_empty(path));
}

TEST_F(SqlDatabaseBadFileTest, PathThatEndsInASeparatorCreatesTheDirectoryAndNoFile)
{
    const bool opened = database.Open(path + "/", false);

    EXPECT_FALSE(opened);
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path + "/", ForWriting).message));
    EXPECT_TRUE(fs::is_directory(path));
}

TEST_F(SqlDatabaseBadFileTest, FileWithoutPermissionIsNotOpenedAndNotChanged)
{
    MakeTableWithOneRow();
    OpenToEverybody(directory.Path());
    {
        const ScopedPermissions locked(path, fs::perms::none);

        EXPECT_FALSE(database.Open(path, false));
        EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path, ForWriting).message));
        EXPECT_FALSE(database.Open(path, true));
        EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path, SQLITE_OPEN_READONLY).message));
    }
    EXPECT_EQ(CountedRows(), "'1:7'");
}

TEST_F(SqlDatabaseBadFileTest, FileThatMayOnlyBeReadRefusesTheFirstWrite)
{
    MakeTableWithOneRow();
    OpenToEverybody(directory.Path());
    {
        const ScopedPermissions readable(path, ReadableFile);
        const bool opened = database.Open(path, false);
        SqlCommand command(database);

        EXPECT_TRUE(opened);
        EXPECT_THAT(database, HasError(0, ""));
        EXPECT_FALSE(command.Execute("INSERT INTO t VALUES (8)"));
        EXPECT_THAT(command, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)));
    }
    EXPECT_EQ(CountedRows(), "'1:7'");
}

TEST_F(SqlDatabaseBadFileTest, ConnectionForReadingRefusesEveryWriteAndStaysUsable)
{
    MakeTableWithOneRow();
    database.Open(path, true);
    SqlCommand command(database);

    for (const char* sql : {"INSERT INTO t VALUES (8)", "DELETE FROM t", "DROP TABLE t", "CREATE TABLE u(a)"}) {
        EXPECT_FALSE(command.Execute(sql)) << sql;
        EXPECT_THAT(command, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY))) << sql;
    }

    EXPECT_TRUE(command.Execute("SELECT * FROM t"));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.Close());
    EXPECT_EQ(CountedRows(), "'1:7'");
}

TEST_F(SqlDatabaseBadFileTest, FileThatIsNoDatabaseIsRefusedAtItsFirstUse)
{
    const std::string content(4096, 'x');
    std::ofstream(path, std::ios::binary) << content;

    const bool opened = database.Open(path, false);
    SqlCommand command(database);

    EXPECT_TRUE(opened);
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_FALSE(command.Execute("CREATE TABLE t(a)"));
    EXPECT_THAT(command, HasError(SQLITE_NOTADB, sqlite3_errstr(SQLITE_NOTADB)));
    EXPECT_TRUE(database.Close());
    EXPECT_EQ(BytesOfFile(path), content);
}

TEST_F(SqlDatabaseBadFileTest, DatabaseLockedByAnotherConnectionOpensAndRefusesUse)
{
    MakeTableWithOneRow();
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE; INSERT INTO t VALUES (8)");

    const bool opened = database.Open(path, false);
    SqlCommand command(database);

    EXPECT_TRUE(opened);
    EXPECT_FALSE(command.Execute("INSERT INTO t VALUES (9)"));
    EXPECT_THAT(command, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));
    EXPECT_FALSE(command.Execute("SELECT * FROM t"));
    EXPECT_THAT(command, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));

    other.Execute("COMMIT");
    EXPECT_TRUE(command.Execute("INSERT INTO t VALUES (9)"));
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_EQ(CountedRows(), "'3:9'");
}

TEST_F(SqlDatabaseBadFileTest, PathIsReadUpToItsFirstZeroByte)
{
    using namespace std::string_literals;

    const bool opened = database.Open(path + "\0tail"s, false);

    EXPECT_TRUE(opened);
    EXPECT_TRUE(fs::is_regular_file(path));
}

} // namespace

} // namespace Morvik::sql::tests
