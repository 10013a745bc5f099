#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "support/HasError.h"
#include "support/OpenFacade.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using Texts = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

class DropTableTest : public OpenFacade {
protected:
    DropTableTest()
    {
        RawSqlite(path).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2), (3);"
                                "CREATE TABLE other (a); INSERT INTO other VALUES (1), (2)");
    }

    Rows Tables() const { return PlainRows("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"); }

    const Rows bothTables{{"'other'"}, {"'t'"}};
};

TEST_F(DropTableTest, RemovesTheTable)
{
    EXPECT_TRUE(database.DropTable("t"));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_EQ(Tables(), (Rows{{"'other'"}}));
}

TEST_F(DropTableTest, DeletesTheRowsAndThenDropsTheTable)
{
    const SqliteCallRecorder recorded;

    ASSERT_TRUE(database.DropTable("T"));

    EXPECT_EQ(recorded.Executed(), (Texts{"DELETE FROM T", "DROP TABLE IF EXISTS T"}));
    EXPECT_EQ(recorded.CallsOf("sqlite3_prepare"),
              (Texts{"sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)"}));
}

TEST_F(DropTableTest, AbsentTableIsASuccessWithNothingRun)
{
    const SqliteCallRecorder recorded;

    EXPECT_TRUE(database.DropTable("absent"));

    EXPECT_TRUE(recorded.Executed().empty());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DropTableTest, EmptyNameIsRefused)
{
    const SqliteCallRecorder recorded;

    EXPECT_FALSE(database.DropTable(""));

    EXPECT_TRUE(recorded.Calls().empty());
    EXPECT_THAT(database, HasError(112, "Missing table name."));
}

TEST_F(DropTableTest, FailedExistenceTestIsAFailureWithNothingRun)
{
    const RawFailure failure = FailureOfPrepare(RawSqlite(path).Handle(), TableExistsQuery("it's"));
    ASSERT_NE(failure.code, 0);
    const SqliteCallRecorder recorded;

    EXPECT_FALSE(database.DropTable("it's"));

    EXPECT_TRUE(recorded.Executed().empty());
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

TEST_F(DropTableTest, FailedStepOfTheExistenceTestPassesForAnAbsentTable)
{
    SqliteCallRecorder recorded;
    recorded.ReplaceNextResult("sqlite3_step", SQLITE_IOERR, false);

    EXPECT_TRUE(database.DropTable("t"));

    EXPECT_FALSE(recorded.Pending());
    EXPECT_TRUE(recorded.Executed().empty());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DropTableTest, FailedDeleteKeepsTheTable)
{
    RawSqlite plain(path);
    plain.Execute("CREATE TRIGGER keep BEFORE DELETE ON t BEGIN SELECT RAISE(ABORT, 'rows are kept'); END");
    const RawFailure failure = PlainRejection("DELETE FROM t");
    const SqliteCallRecorder recorded;

    EXPECT_FALSE(database.DropTable("t"));

    EXPECT_EQ(recorded.Executed(), Texts{"DELETE FROM t"});
    EXPECT_EQ(failure.message, "rows are kept");
    EXPECT_THAT(database, HasError(failure.code, failure.message));
    EXPECT_EQ(plain.Value("SELECT count(*) FROM t"), "3");
}

// The result in raw SQLite of dropping a table while a query of the connection is active.
RawFailure FailureOfDropDuringAQuery()
{
    RawSqlite plain(":memory:");
    plain.Execute("CREATE TABLE t (a); CREATE TABLE other (a); INSERT INTO other VALUES (1)");
    sqlite3_stmt* query = nullptr;
    sqlite3_prepare_v2(plain.Handle(), "SELECT a FROM other", -1, &query, nullptr);
    sqlite3_step(query);
    const RawFailure failure = FailureOfExec(plain.Handle(), "DROP TABLE t");
    sqlite3_finalize(query);
    return failure;
}

TEST_F(DropTableTest, FailedDropLeavesAnEmptyTable)
{
    const RawFailure failure = FailureOfDropDuringAQuery();
    ASSERT_NE(failure.code, 0);
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM other"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_FALSE(database.DropTable("t"));

    EXPECT_THAT(database, HasError(failure.code, failure.message));
    EXPECT_EQ(Tables(), bothTables);
    EXPECT_EQ(PlainRows("SELECT count(*) FROM t"), (Rows{{"0"}}));
}

TEST_F(DropTableTest, LeavesARowByRowWalkUndisturbed)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM other"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_TRUE(database.DropTable("absent"));

    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_EQ(std::get<int>(row.cells.at(0).value), 2);
}

TEST_F(DropTableTest, ResetsTheCodeAndKeepsTheEarlierMessage)
{
    FailWithMissingCommand();
    EXPECT_TRUE(database.DropTable("absent"));
    EXPECT_THAT(database, HasError(0, "Missing command."));

    FailWithMissingCommand();
    EXPECT_TRUE(database.DropTable("t"));
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST(ClosedDatabaseApiTest, DropTableLooksAtTheConnectionFirst)
{
    DatabaseApi database;
    const SqliteCallRecorder recorded;

    for (const std::string name : {"t", "", "it's"}) {
        EXPECT_FALSE(database.Execute("")) << name;
        EXPECT_FALSE(database.DropTable(name)) << name;
        EXPECT_THAT(database, HasError(111, "Database isn't open.")) << name;
    }
    EXPECT_TRUE(recorded.Calls().empty());
}

TEST(ClosedDatabaseApiTest, AFacadeClosedAgainRefusesAsOneNeverOpened)
{
    DatabaseApi database;
    ASSERT_TRUE(database.OpenDatabase(":memory:", false));
    ASSERT_TRUE(database.CloseDatabase());

    EXPECT_FALSE(database.DropTable("t"));

    EXPECT_THAT(database, HasError(111, "Database isn't open."));
}

} // namespace

} // namespace Morvik::sql::tests
