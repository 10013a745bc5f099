#include <sql/SqlDatabase.h>

#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/ChildProcess.h"
#include "support/OpenConnection.h"
#include "support/ScopedPermissions.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

// Files that SQLite rejects when they are opened or first used. The library returns SQLite's error, and the files keep
// their content.
class SqlDatabaseBadFileTest : public testing::Test {
protected:
    // A database with one row in a directory that everybody may enter.
    void MakeTableWithOneRow()
    {
        RawSqlite(path).Execute("CREATE TABLE t(a); INSERT INTO t VALUES (7)");
        OpenToEverybody(directory.Path());
    }

    std::string CountedRows() const { return RawSqlite(path).Value("SELECT count(*) || ':' || max(a) FROM t"); }

    // The file cannot be opened, and the error is that of raw SQLite.
    void ExpectCannotOpen(const std::string& file, bool readOnly)
    {
        EXPECT_FALSE(database.Open(file, readOnly));
        EXPECT_FALSE(database.IsOpen());
        const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
        const RawFailure raw = FailureOfOpen(file, flags);
        EXPECT_EQ(raw.code, SQLITE_CANTOPEN);
        EXPECT_NE(raw.message, "");
        EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, raw.message));
    }

    // The file is opened without an error, and SQLite rejects the first statement with `code`.
    void ExpectOpensAndRejects(const std::string& sql, int code)
    {
        EXPECT_TRUE(database.Open(path, false));
        EXPECT_THAT(database, HasError(0, ""));
        ExpectRejected(sql, code);
    }

    void ExpectRejected(const std::string& sql, int code)
    {
        EXPECT_FALSE(command.Execute(sql)) << sql;
        EXPECT_THAT(command, HasError(code, sqlite3_errstr(code))) << sql;
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    SqlDatabase database;
    SqlCommand command{database};
};

TEST_F(SqlDatabaseBadFileTest, MissingFileIsNotCreatedForReading)
{
    ExpectCannotOpen(path, true);

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

TEST_F(SqlDatabaseBadFileTest, FileInPlaceOfTheDirectoryIsRejectedBySqlite)
{
    std::ofstream(directory.File("file")) << "content";

    ExpectCannotOpen(directory.File("file/test.db"), false);

    EXPECT_EQ(FileContent(directory.File("file")), "content");
}

TEST_F(SqlDatabaseBadFileTest, DirectoryIsNoDatabase)
{
    fs::create_directory(path);

    ExpectCannotOpen(path, false);

    EXPECT_TRUE(fs::is_empty(path));
}

TEST_F(SqlDatabaseBadFileTest, PathEndingInASeparatorCreatesOnlyTheDirectory)
{
    ExpectCannotOpen(path + "/", false);

    EXPECT_TRUE(fs::is_directory(path));
}

TEST_F(SqlDatabaseBadFileTest, FileWithoutPermissionIsNotOpenedAndNotChanged)
{
    MakeTableWithOneRow();
    {
        const ScopedPermissions locked(path, fs::perms::none);
        ExpectCannotOpen(path, false);
        ExpectCannotOpen(path, true);
    }
    EXPECT_EQ(CountedRows(), "'1:7'");
}

TEST_F(SqlDatabaseBadFileTest, ReadOnlyFileRejectsTheFirstWrite)
{
    MakeTableWithOneRow();
    {
        const ScopedPermissions readable(path, ReadableFile);
        ExpectOpensAndRejects("INSERT INTO t VALUES (8)", SQLITE_READONLY);
    }
    EXPECT_EQ(CountedRows(), "'1:7'");
}

TEST_F(SqlDatabaseBadFileTest, ConnectionForReadingRejectsEveryWriteAndStaysUsable)
{
    MakeTableWithOneRow();
    database.Open(path, true);

    for (const char* sql : {"INSERT INTO t VALUES (8)", "DELETE FROM t", "DROP TABLE t", "CREATE TABLE u(a)"}) {
        ExpectRejected(sql, SQLITE_READONLY);
    }

    EXPECT_TRUE(command.Execute("SELECT * FROM t"));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.Close());
    EXPECT_EQ(CountedRows(), "'1:7'");
}

TEST_F(SqlDatabaseBadFileTest, NonDatabaseFileIsRejectedAtFirstUse)
{
    const std::string content(4096, 'x');
    std::ofstream(path, std::ios::binary) << content;

    ExpectOpensAndRejects("CREATE TABLE t(a)", SQLITE_NOTADB);

    EXPECT_TRUE(database.Close());
    EXPECT_EQ(FileContent(path), content);
}

TEST_F(SqlDatabaseBadFileTest, DatabaseLockedByAnotherConnectionOpensAndRejectsUse)
{
    MakeTableWithOneRow();
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE; INSERT INTO t VALUES (8)");

    ExpectOpensAndRejects("INSERT INTO t VALUES (9)", SQLITE_BUSY);
    ExpectRejected("SELECT * FROM t", SQLITE_BUSY);

    other.Execute("COMMIT");
    EXPECT_TRUE(command.Execute("INSERT INTO t VALUES (9)"));
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_EQ(CountedRows(), "'3:9'");
}

} // namespace

} // namespace Morvik::sql::tests
