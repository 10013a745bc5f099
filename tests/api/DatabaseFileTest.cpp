#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "api/FacadeTest.h"
#include "support/ChildProcess.h"
#include "support/RawLegacyStatement.h"
#include "support/ScopedPermissions.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

// The facade's errors for unusual and damaged files, and that the files keep their content.

class DatabaseFileTest : public testing::Test {
protected:
    void TearDown() override
    {
        if (m_made) {
            ExpectNothingLost();
        }
    }

    /// Creates a database with two rows at `path`, which must still be there after the test.
    void MakeDatabase()
    {
        RawSqlite(path).Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 'one'), (2, NULL)");
        m_made = true;
    }

    void ExpectNothingLost() const
    {
        RawSqlite raw(path);
        EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
        EXPECT_THAT(raw.Rows("SELECT name FROM sqlite_master"), ElementsAre(ElementsAre("'t'")));
        EXPECT_THAT(raw.Rows("SELECT a, b FROM t WHERE a < 3"),
                    ElementsAre(ElementsAre("1", "'one'"), ElementsAre("2", "NULL")));
    }

    void ExpectFailedOpen(const std::string& file, bool readOnly, const RawFailure& failure)
    {
        EXPECT_FALSE(database.OpenDatabase(file, readOnly));
        EXPECT_THAT(database, HasErrorOf(failure));
        EXPECT_FALSE(database.IsOpen());
    }

    void ExpectNotWritten(const RawFailure& failure)
    {
        EXPECT_FALSE(database.WriteTableValues("t", row));
        EXPECT_THAT(database, HasErrorOf(failure));
        EXPECT_FALSE(database.UpdateTableValues("t", row, ""));
        EXPECT_THAT(database, HasErrorOf(failure));
        EXPECT_FALSE(database.Execute("CREATE TABLE u (a)"));
        EXPECT_THAT(database, HasErrorOf(failure));
    }

    /// Checks that the open database can be neither written nor read, with the errors of raw SQLite.
    void ExpectUnusable(int code)
    {
        const RawFailure executed = FailureOfExec(RawSqlite(path).Handle(), "INSERT INTO t (a,b) VALUES (3,\"three\")");
        const RawFailure prepared = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT * FROM t");
        EXPECT_EQ(executed.code, code);
        ExpectNotWritten(executed);
        EXPECT_FALSE(database.ReadTableValues("t", data));
        EXPECT_THAT(database, HasErrorOf(prepared));
        EXPECT_FALSE(database.SqlQueryBegin("SELECT * FROM t"));
        EXPECT_THAT(database, HasErrorOf(prepared));
        EXPECT_THAT(data.rows, IsEmpty());
        EXPECT_TRUE(database.IsOpen());
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    const DbTableDataWrite row{{"a", "b"}, {{{IntegerCell(3), TextCell("three")}}}};
    DatabaseApi database;
    DbTableData data;

private:
    bool m_made = false;
};

TEST_F(DatabaseFileTest, NonDatabaseFileFailsAtFirstUseAndStaysUnchanged)
{
    const std::string content(5000, 'x');
    std::ofstream(path) << content;
    ASSERT_TRUE(database.OpenDatabase(path, false));

    ExpectUnusable(SQLITE_NOTADB);

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_EQ(FileContent(path), content);
}

TEST_F(DatabaseFileTest, TruncatedFileIsDamagedAndStaysUnchanged)
{
    RawSqlite(path).Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, zeroblob(100000))");
    fs::resize_file(path, 3000);
    const std::string content = FileContent(path);
    ASSERT_TRUE(database.OpenDatabase(path, false));

    ExpectUnusable(SQLITE_CORRUPT);

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_EQ(FileContent(path), content);
}

TEST_F(DatabaseFileTest, ReadOnlyDatabaseIsReadAndNotWritten)
{
    const RawFailure failure{SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)};
    MakeDatabase();
    ASSERT_TRUE(database.OpenDatabase(path, true));

    ExpectNotWritten(failure);
    EXPECT_FALSE(database.DropTable("t"));
    EXPECT_THAT(database, HasErrorOf(failure));

    EXPECT_TRUE(database.ReadTableValues("t", data));
    EXPECT_EQ(data.rows.size(), 2U);
}

TEST_F(DatabaseFileTest, LockOfAnotherConnectionFailsUntilItIsReleased)
{
    MakeDatabase();
    ASSERT_TRUE(database.OpenDatabase(path, false));
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");

    ExpectUnusable(SQLITE_BUSY);

    other.Execute("COMMIT");
    ExpectNothingLost();
    EXPECT_TRUE(database.WriteTableValues("t", row));
    EXPECT_TRUE(database.ReadTableValues("t", data));
    EXPECT_EQ(data.rows.size(), 3U);
}

TEST_F(DatabaseFileTest, LockDuringAWalkFailsTheNextStep)
{
    MakeDatabase();
    RawSqlite raw(path);
    RawLegacyStatement statement(raw, "SELECT a FROM t");
    ASSERT_TRUE(database.OpenDatabase(path, false));
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const RawFailure stepped = statement.Step();
    DbTableRowValues fetched;

    EXPECT_FALSE(database.ReadNextRow(fetched));

    EXPECT_NE(stepped.code, SQLITE_ROW);
    EXPECT_THAT(database, HasErrorOf(stepped));
}

TEST_F(DatabaseFileTest, DestructionDuringAWalkOrATransactionLosesNothing)
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
    {
        DatabaseApi writing;
        ASSERT_TRUE(writing.OpenDatabase(path, false));
        ASSERT_TRUE(writing.Execute("BEGIN; DELETE FROM t"));
        ASSERT_TRUE(writing.WriteTableValues("t", row));
    }
    ExpectNothingLost();
}

TEST_F(DatabaseFileTest, FailedOpenLeavesTheFacadeReadyForTheNextOpen)
{
    const RawFailure cannotOpen{SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN)};
    const std::string hidden = directory.File("inner/x.db");
    MakeDatabase();
    OpenToEverybody(directory.Path());
    ExpectFailedOpen(directory.Path().string(), false, cannotOpen);
    ExpectFailedOpen(directory.File("made/absent.db"), true, cannotOpen);
    EXPECT_TRUE(fs::is_empty(directory.File("made")));
    ExpectFailedOpen(path + "/below/x.db", false, {111, "Create directory failed: " + path + "/below/x.db"});
    {
        const ScopedPermissions locked(path, fs::perms::none);
        ExpectFailedOpen(path, false, cannotOpen);
        ExpectFailedOpen(path, true, cannotOpen);
    }
    {
        const ScopedPermissions readable(directory.Path(), ReadableDirectory);
        ExpectFailedOpen(directory.File("absent.db"), false, cannotOpen);
        ExpectFailedOpen(hidden, false, {111, "Create directory failed: " + hidden});
    }
    {
        const ScopedPermissions locked(directory.Path(), fs::perms::none);
        ExpectFailedOpen(hidden, true, {111, "Create directory failed: " + hidden});
    }

    EXPECT_TRUE(database.OpenDatabase(hidden, false)) << "it makes the directory";
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_TRUE(database.OpenDatabase(path, false) && database.ReadTableValues("t", data));
    EXPECT_EQ(data.rows.size(), 2U);
}

TEST_F(DatabaseFileTest, ReadOnlyFileIsReadAndNotWritten)
{
    MakeDatabase();
    OpenToEverybody(directory.Path());
    const ScopedPermissions readable(path, ReadableFile);

    EXPECT_TRUE(database.OpenDatabase(path, false));
    EXPECT_FALSE(database.Execute("INSERT INTO t VALUES (2, NULL)"));
    EXPECT_THAT(database, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)));
    EXPECT_TRUE(database.Execute("SELECT a FROM t"));
}

} // namespace

} // namespace Morvik::sql::tests
