#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/RawLegacyStatement.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The facade's errors for unusual and damaged files, and that the files keep their content.

std::string BytesOfFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

class DatabaseFileTest : public testing::Test {
protected:
    /// Creates a database with two rows at `path`.
    void MakeDatabase() const
    {
        RawSqlite(path).Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 'one'), (2, NULL)");
    }

    void ExpectNothingLost() const
    {
        RawSqlite plain(path);
        EXPECT_EQ(plain.Value("PRAGMA integrity_check"), "'ok'");
        EXPECT_THAT(plain.Rows("SELECT name FROM sqlite_master"), ElementsAre(ElementsAre("'t'")));
        EXPECT_THAT(plain.Rows("SELECT a, b FROM t"), ElementsAre(ElementsAre("1", "'one'"), ElementsAre("2", "NULL")));
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    const DbTableDataWrite row{{"a", "b"}, {{{IntegerCell(3), TextCell("three")}}}};
    DatabaseApi database;
    DbTableData data;
};

TEST_F(DatabaseFileTest, MissingDirectoriesAreMade)
{
    const std::string deep = directory.File("a/b/c.db");

    EXPECT_TRUE(database.OpenDatabase(deep, false));
    EXPECT_TRUE(database.Execute("CREATE TABLE t (a)"));

    EXPECT_TRUE(std::filesystem::is_regular_file(deep));
}

TEST_F(DatabaseFileTest, ReadOnlyOpenOfAMissingFileMakesItsDirectoryAndFails)
{
    const std::string deep = directory.File("a/b/c.db");

    EXPECT_FALSE(database.OpenDatabase(deep, true));

    const RawFailure plain = FailureOfOpen(deep, SQLITE_OPEN_READONLY);
    EXPECT_EQ(plain.code, SQLITE_CANTOPEN);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_FALSE(database.IsOpen());
    EXPECT_TRUE(std::filesystem::is_empty(directory.File("a/b")));
}

TEST_F(DatabaseFileTest, FileInTheWayOfTheDirectoryIsLeftAsItIs)
{
    WriteFile(directory.File("file"), "kept");
    const RawFailure plain = FailureOfOpen(directory.File("file/x.db"), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);

    EXPECT_FALSE(database.OpenDatabase(directory.File("file/x.db"), false));
    EXPECT_EQ(plain.code, SQLITE_CANTOPEN);
    EXPECT_THAT(database, HasError(plain.code, plain.message));

    EXPECT_FALSE(database.OpenDatabase(directory.File("file/sub/x.db"), false));
    EXPECT_THAT(database, HasError(111, "Create directory failed: " + directory.File("file/sub/x.db")));

    EXPECT_FALSE(database.IsOpen());
    EXPECT_EQ(BytesOfFile(directory.File("file")), "kept");
}

TEST_F(DatabaseFileTest, DirectoryThatCannotBeMadeIsNamedByTheDatabase)
{
    for (const bool readOnly : {false, true}) {
        EXPECT_FALSE(database.OpenDatabase("/proc/none/x.db", readOnly));

        EXPECT_THAT(database, HasError(111, "Create directory failed: /proc/none/x.db"));
        EXPECT_FALSE(database.IsOpen());
    }
}

TEST_F(DatabaseFileTest, DirectoryInPlaceOfTheFileIsRefusedAsSqliteRefusesIt)
{
    const RawFailure plain = FailureOfOpen(directory.Path().string(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);

    EXPECT_FALSE(database.OpenDatabase(directory.Path().string(), false));

    EXPECT_EQ(plain.code, SQLITE_CANTOPEN);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
}

TEST_F(DatabaseFileTest, FacadeOpensAGoodFileAfterABadOne)
{
    MakeDatabase();
    ASSERT_FALSE(database.OpenDatabase("/proc/none/x.db", false));

    EXPECT_TRUE(database.OpenDatabase(path, false));
    EXPECT_TRUE(database.ReadTableValues("t", data));

    EXPECT_EQ(data.rows.size(), 2U);
}

TEST_F(DatabaseFileTest, FileThatIsNoDatabaseIsRefusedByItsFirstUseAndLeftAsItIs)
{
    const std::string content(5000, 'x');
    WriteFile(path, content);
    ASSERT_TRUE(database.OpenDatabase(path, false));
    const RawFailure executed = FailureOfExec(RawSqlite(path).Handle(), "CREATE TABLE t (a)");
    const RawFailure prepared = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT * FROM t");
    ASSERT_EQ(executed.code, SQLITE_NOTADB);

    EXPECT_FALSE(database.Execute("CREATE TABLE t (a)"));
    EXPECT_THAT(database, HasError(executed.code, executed.message));
    EXPECT_FALSE(database.WriteTableValues("t", row));
    EXPECT_THAT(database, HasError(executed.code, executed.message));
    EXPECT_FALSE(database.ReadTableValues("t", data));
    EXPECT_THAT(database, HasError(prepared.code, prepared.message));
    EXPECT_FALSE(database.SqlQueryBegin("SELECT * FROM t"));
    EXPECT_THAT(database, HasError(prepared.code, prepared.message));

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_EQ(BytesOfFile(path), content);
}

TEST_F(DatabaseFileTest, FileCutShortIsRefusedAndLeftAsItIs)
{
    RawSqlite(path).Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, zeroblob(100000))");
    std::filesystem::resize_file(path, 3000);
    const std::string content = BytesOfFile(path);
    ASSERT_TRUE(database.OpenDatabase(path, false));
    const RawFailure executed = FailureOfExec(RawSqlite(path).Handle(), "INSERT INTO t (a,b) VALUES (3,\"three\")");
    const RawFailure prepared = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT * FROM t");
    ASSERT_EQ(executed.code, SQLITE_CORRUPT);

    EXPECT_FALSE(database.WriteTableValues("t", row));
    EXPECT_THAT(database, HasError(executed.code, executed.message));
    EXPECT_FALSE(database.ReadTableValues("t", data));
    EXPECT_THAT(database, HasError(prepared.code, prepared.message));

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_EQ(BytesOfFile(path), content);
}

TEST_F(DatabaseFileTest, ReadOnlyDatabaseIsReadAndNotWritten)
{
    MakeDatabase();
    ASSERT_TRUE(database.OpenDatabase(path, true));

    EXPECT_FALSE(database.WriteTableValues("t", row));
    EXPECT_THAT(database, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)));
    EXPECT_FALSE(database.UpdateTableValues("t", row, ""));
    EXPECT_THAT(database, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)));
    EXPECT_FALSE(database.DropTable("t"));
    EXPECT_THAT(database, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)));
    EXPECT_FALSE(database.Execute("CREATE TABLE u (a)"));
    EXPECT_THAT(database, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)));
    EXPECT_TRUE(database.ReadTableValues("t", data));

    EXPECT_EQ(data.rows.size(), 2U);
    ExpectNothingLost();
}

TEST_F(DatabaseFileTest, LockOfAnotherConnectionIsReportedAndOutwaited)
{
    MakeDatabase();
    ASSERT_TRUE(database.OpenDatabase(path, false));
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const RawFailure executed = FailureOfExec(RawSqlite(path).Handle(), "DELETE FROM t");
    const RawFailure prepared = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT a FROM t");
    ASSERT_EQ(executed.code, SQLITE_BUSY);

    EXPECT_FALSE(database.WriteTableValues("t", row));
    EXPECT_THAT(database, HasError(executed.code, executed.message));
    EXPECT_FALSE(database.UpdateTableValues("t", row, ""));
    EXPECT_THAT(database, HasError(executed.code, executed.message));
    EXPECT_FALSE(database.ReadTableValues("t", data));
    EXPECT_THAT(database, HasError(prepared.code, prepared.message));
    EXPECT_THAT(data.rows, IsEmpty());
    EXPECT_TRUE(database.IsOpen());

    other.Execute("COMMIT");
    ExpectNothingLost();
    EXPECT_TRUE(database.WriteTableValues("t", row));
    EXPECT_TRUE(database.ReadTableValues("t", data));
    EXPECT_EQ(data.rows.size(), 3U);
}

TEST_F(DatabaseFileTest, LockTakenDuringAWalkFailsItsStepAsItFailsRawSqlites)
{
    MakeDatabase();
    RawSqlite plain(path);
    RawLegacyStatement statement(plain, "SELECT a FROM t");
    ASSERT_TRUE(database.OpenDatabase(path, false));
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const RawFailure stepped = statement.Step();
    DbTableRowValues fetched;

    EXPECT_FALSE(database.ReadNextRow(fetched));

    EXPECT_NE(stepped.code, SQLITE_ROW);
    EXPECT_THAT(database, HasError(stepped.code, stepped.message));
    other.Execute("ROLLBACK");
    ExpectNothingLost();
}

TEST_F(DatabaseFileTest, DestroyingTheFacadeDuringAWalkLosesNothing)
{
    MakeDatabase();
    {
        DatabaseApi walking;
        ASSERT_TRUE(walking.OpenDatabase(path, false));
        ASSERT_TRUE(walking.Execute("DELETE FROM t WHERE a=2; INSERT INTO t VALUES (2, NULL)"));
        ASSERT_TRUE(walking.SqlQueryBegin("SELECT a FROM t"));
        ASSERT_NE(walking.begin(), walking.end());
    }

    ExpectNothingLost();
}

TEST_F(DatabaseFileTest, UnfinishedTransactionIsRolledBackByDestruction)
{
    MakeDatabase();
    {
        DatabaseApi writing;
        ASSERT_TRUE(writing.OpenDatabase(path, false));
        ASSERT_TRUE(writing.Execute("BEGIN"));
        ASSERT_TRUE(writing.WriteTableValues("t", row));
    }

    ExpectNothingLost();
}

} // namespace

} // namespace Morvik::sql::tests
