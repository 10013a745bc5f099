#include <sqlite3.h>

#include <string>

#include "api/FacadeTest.h"
#include "support/RawLegacyStatement.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A row-by-row query that fails after its first row, and one that continues after the failure of another operation.

class DatabaseApiCursorFailureTest : public FacadeTest {
protected:
    /// Begins the query that fails, and fetches its first row into the current row.
    void BeginFailing()
    {
        ASSERT_NE(raw.step.code, SQLITE_DONE);
        ASSERT_TRUE(database.SqlQueryBegin(failing));
        ASSERT_NE(database.begin(), database.end());
    }

    const std::string failing = "SELECT abs(iif(a = 2, -9223372036854775808, a)) FROM t";
    const PlainWalk raw = LegacyWalk(RawSqlite(path).Handle(), failing);
};

TEST_F(DatabaseApiCursorFailureTest, FailedStepCopiesSqlitesErrorAndLeavesTheRow)
{
    BeginFailing();
    row.cells = {TextCell("kept")};

    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasErrorOf(raw.step));
    EXPECT_TRUE(database.Failed());
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
}

TEST_F(DatabaseApiCursorFailureTest, FailedStepMakesBeginReturnTheEndAndLeavesTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin(failing));
    const DbTableRowValues& current = *database.begin();

    EXPECT_EQ(database.begin(), database.end());

    EXPECT_THAT(database, HasErrorOf(raw.step));
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
}

TEST_F(DatabaseApiCursorFailureTest, CloseReadTableRepeatsTheFailureAndReleasesTheQuery)
{
    ASSERT_NE(raw.finalize.code, SQLITE_OK);
    BeginFailing();
    ASSERT_FALSE(database.ReadNextRow(row));
    {
        const SqliteCallRecorder sqlite;
        EXPECT_FALSE(database.CloseReadTable());
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
    }
    EXPECT_THAT(database, HasErrorOf(raw.finalize));
    ExpectNoWalk();
    EXPECT_TRUE(database.CloseReadTable());
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiCursorFailureTest, NewQueryForgetsTheFailedOne)
{
    BeginFailing();
    ASSERT_FALSE(database.ReadNextRow(row));

    EXPECT_TRUE(database.SqlQueryBegin("SELECT 5"));

    EXPECT_TRUE(database.Succeeded());
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(5)"));
}

TEST_F(DatabaseApiCursorFailureTest, SchemaChangedAfterTheQueryBeganFailsItsFirstStep)
{
    RawSqlite other(path);
    RawLegacyStatement statement(other, "SELECT a FROM t");
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    RawSqlite(path).Execute("CREATE TABLE made (a)");
    const RawFailure stepped = statement.Step();
    const RawFailure finalized = statement.Finalize();
    ASSERT_NE(stepped.code, SQLITE_ROW);

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasErrorOf(stepped));

    EXPECT_FALSE(database.CloseReadTable());
    EXPECT_EQ(finalized.code, SQLITE_SCHEMA);
    EXPECT_THAT(database, HasErrorOf(finalized));
}

using DatabaseApiEarlierFailureTest = FacadeTest;

TEST_F(DatabaseApiEarlierFailureTest, FetchesConsumeRowsWithoutCellsUntilTheEndResetsTheCode)
{
    BeginWalk();
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    for (int fetch = 2; fetch <= 3; ++fetch) {
        row.cells = {TextCell("old")};
        EXPECT_FALSE(database.ReadNextRow(row));
        EXPECT_THAT(row.cells, IsEmpty());
        EXPECT_THAT(database, HasError(112, "Missing command."));
    }
    row.cells = {TextCell("kept")};
    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 3U);
}

TEST_F(DatabaseApiEarlierFailureTest, BeginConsumesARowAndReturnsTheEndWithoutCellsInTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();
    ASSERT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    FailWithMissingCommand();

    EXPECT_EQ(database.begin(), database.end());
    EXPECT_THAT(database, HasError(112, "Missing command."));
    EXPECT_THAT(current.cells, IsEmpty());

    ASSERT_TRUE(database.Execute("SELECT 0"));
    ASSERT_NE(database.begin(), database.end());
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(3)"));
}

TEST_F(DatabaseApiEarlierFailureTest, SuccessOfAnotherOperationLetsTheWalkContinue)
{
    BeginWalk();
    FailWithMissingCommand();
    ASSERT_TRUE(database.Execute("SELECT 0"));

    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)"));
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(DatabaseApiEarlierFailureTest, FailedConversionRemainsUntilTheEnd)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_value_type", 9, false);

    for (int fetch = 1; fetch <= 3; ++fetch) {
        EXPECT_FALSE(database.ReadNextRow(row));
        EXPECT_THAT(database, HasError(112, "Unknown value type."));
        EXPECT_THAT(row.cells, IsEmpty());
    }
    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(database, HasError(0, ""));
}

} // namespace

} // namespace Morvik::sql::tests
