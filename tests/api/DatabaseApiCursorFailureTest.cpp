#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/RawLegacyStatement.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A row-by-row query that fails after some rows, and a query that continues while an earlier failure is in the record.

class DatabaseApiCursorFailureTest : public OpenFacade {
protected:
    DatabaseApiCursorFailureTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (-9223372036854775808), (3)"));
    }

    const std::string failing = "SELECT abs(a) FROM t";
    DbTableRowValues row;
};

TEST_F(DatabaseApiCursorFailureTest, FailedStepTakesOverSqlitesRecordAndLeavesTheRow)
{
    const PlainWalk plain = LegacyWalk(RawSqlite(path).Handle(), failing);
    ASSERT_NE(plain.step.code, SQLITE_DONE);
    ASSERT_TRUE(database.SqlQueryBegin(failing));
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(plain.step.code, plain.step.message));
    EXPECT_TRUE(database.Failed());
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(1)"));
}

TEST_F(DatabaseApiCursorFailureTest, FailedStepMakesBeginReturnTheEndAndLeavesTheCurrentRow)
{
    const PlainWalk plain = LegacyWalk(RawSqlite(path).Handle(), failing);
    ASSERT_TRUE(database.SqlQueryBegin(failing));
    const DbTableRowValues& current = *database.begin();

    EXPECT_EQ(database.begin(), database.end());

    EXPECT_THAT(database, HasError(plain.step.code, plain.step.message));
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
}

TEST_F(DatabaseApiCursorFailureTest, CloseReadTableRepeatsTheFailedStepsRecordAndReleasesTheQueryAllTheSame)
{
    const PlainWalk plain = LegacyWalk(RawSqlite(path).Handle(), failing);
    ASSERT_NE(plain.finalize.code, SQLITE_OK);
    ASSERT_TRUE(database.SqlQueryBegin(failing));
    ASSERT_TRUE(database.ReadNextRow(row));
    ASSERT_FALSE(database.ReadNextRow(row));
    {
        const SqliteCallRecorder sqlite;

        EXPECT_FALSE(database.CloseReadTable());

        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
    }
    EXPECT_THAT(database, HasError(plain.finalize.code, plain.finalize.message));
    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));
    EXPECT_TRUE(database.CloseReadTable());
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiCursorFailureTest, NewQueryForgetsTheFailedOne)
{
    ASSERT_TRUE(database.SqlQueryBegin(failing));
    ASSERT_TRUE(database.ReadNextRow(row));
    ASSERT_FALSE(database.ReadNextRow(row));

    EXPECT_TRUE(database.SqlQueryBegin("SELECT 5"));

    EXPECT_TRUE(database.Succeeded());
    EXPECT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(5)"));
}

TEST_F(DatabaseApiCursorFailureTest, SchemaChangedAfterTheQueryBeganFailsItsFirstStep)
{
    RawSqlite plain(path);
    RawLegacyStatement statement(plain, "SELECT a FROM t");
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    RawSqlite(path).Execute("CREATE TABLE made (a)");
    const RawFailure stepped = statement.Step();
    const RawFailure finalized = statement.Finalize();
    ASSERT_NE(stepped.code, SQLITE_ROW);

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(stepped.code, stepped.message));

    EXPECT_FALSE(database.CloseReadTable());
    EXPECT_EQ(finalized.code, SQLITE_SCHEMA);
    EXPECT_THAT(database, HasError(finalized.code, finalized.message));
}

class DatabaseApiStaleFailureTest : public OpenFacade {
protected:
    /// Begins a query of three rows, fetches the first row and then leaves the record 112 "Missing command.".
    void BeginAndFail()
    {
        ASSERT_TRUE(database.SqlQueryBegin("SELECT 1 AS a UNION SELECT 2 UNION SELECT 3 ORDER BY a"));
        ASSERT_TRUE(database.ReadNextRow(row));
        FailWithMissingCommand();
    }

    DbTableRowValues row;
};

TEST_F(DatabaseApiStaleFailureTest, FetchesConsumeRowsWithoutCellsUntilTheEndResetsTheCode)
{
    BeginAndFail();
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

TEST_F(DatabaseApiStaleFailureTest, BeginConsumesARowAndReturnsTheEndWithoutCellsInTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1 AS a UNION SELECT 2 UNION SELECT 3 ORDER BY a"));
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

TEST_F(DatabaseApiStaleFailureTest, AnotherOperationsSuccessLetsTheWalkGoOn)
{
    BeginAndFail();
    ASSERT_TRUE(database.Execute("SELECT 0"));

    EXPECT_TRUE(database.ReadNextRow(row));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)"));
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(DatabaseApiStaleFailureTest, FailedConversionStaysRecordedUntilTheEnd)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1 UNION SELECT 2 UNION SELECT 3"));
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_value_type", 9, false);
        EXPECT_FALSE(database.ReadNextRow(row));
        EXPECT_FALSE(sqlite.Pending());
    }

    for (int fetch = 2; fetch <= 3; ++fetch) {
        EXPECT_FALSE(database.ReadNextRow(row));
        EXPECT_THAT(database, HasError(112, "Unknown value type."));
        EXPECT_THAT(row.cells, IsEmpty());
    }
    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DatabaseApiStaleFailureTest, BeginningAQueryResetsTheCode)
{
    BeginAndFail();

    EXPECT_TRUE(database.SqlQueryBegin("SELECT 5"));

    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_TRUE(database.ReadNextRow(row));
}

} // namespace

} // namespace Morvik::sql::tests
