#include <sqlite3.h>

#include <new>
#include <string>

#include "api/FacadeTest.h"
#include "support/OomInjector.h"
#include "support/RawLegacyStatement.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A row-by-row query: its rows, and what ends it.

using DatabaseApiCursorTest = FacadeTest;

TEST_F(DatabaseApiCursorTest, QueryIsOpenedWithoutFetchingARow)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare(handle, SELECT a FROM t, -1)"));
}

TEST_F(DatabaseApiCursorTest, RowsAreInOrderAndTheEndKeepsTheLastRow)
{
    row.cells.assign(5, TextCell("old"));
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t WHERE a < 3"));

    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(1)", "1:Text string(one)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)", "1:Text string(two)"));
    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.Succeeded());
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)", "1:Text string(two)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(1)", "1:Text string(one)"))
        << "a fetch after the end starts over";
}

TEST_F(DatabaseApiCursorTest, RowIsClearedBeforeMemoryForItsCellsRunsOut)
{
    row.cells = {TextCell("old")};
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));

    {
        const OomInjector failing(0);
        EXPECT_THROW(database.ReadNextRow(row), std::bad_alloc);
    }

    EXPECT_THAT(row.cells, IsEmpty());
}

TEST_F(DatabaseApiCursorTest, QueryWithoutRowsEndsWithTheFirstFetch)
{
    row.cells = {TextCell("kept")};
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t WHERE 0"));

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_EQ(database.begin(), database.end());
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
}

TEST_F(DatabaseApiCursorTest, EndReplacesAnEarlierMessageAndAFetchDoesNot)
{
    FailWithMissingCommand();
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t WHERE a=1"));
    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(0, "Missing command."));

    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DatabaseApiCursorTest, FetchWithoutAQueryFailsAndLeavesTheRow)
{
    row.cells = {TextCell("kept")};
    const SqliteCallRecorder sqlite;

    ExpectNoWalk();
    EXPECT_TRUE(database.CloseReadTable());
    ExpectNoWalk();
    EXPECT_EQ(database.begin(), database.end());
    EXPECT_THAT(database, HasError(111, "Table isn't open."));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_TRUE(database.SqlQueryBegin("-- nothing")) << "a text without a statement begins no query";
    EXPECT_THAT(database, HasError(0, "Table isn't open."));
    ExpectNoWalk();
}

TEST_F(DatabaseApiCursorTest, NewQueryEndsTheEarlierQuery)
{
    BeginWalk();
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.SqlQueryBegin("SELECT b FROM t"));

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_finalize(statement)", "sqlite3_prepare(handle, SELECT b FROM t, -1)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorTest, NextQueryEndsTheEarlierQueryAndEmptiesTheRow)
{
    const std::string unknown = "SELECT missing FROM t";
    for (const auto& [sql, error] :
         {std::pair(std::string(), RawFailure{112, "Missing query SQL statement."}),
          std::pair(unknown, RejectedQuery(unknown)), std::pair(std::string("-- nothing"), RawFailure{0, ""})}) {
        ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
        const DbTableRowValues& current = *database.begin();
        ASSERT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));

        EXPECT_EQ(database.SqlQueryBegin(sql), error.code == 0);

        EXPECT_EQ(database.GetLastError(), error.code);
        EXPECT_TRUE(error.code == 0 || database.GetLastErrorMsg() == error.message);
        EXPECT_THAT(current.cells, IsEmpty());
        ExpectNoWalk();
    }
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiCursorTest, QueryTextMayBeInTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 'SELECT b AS a_name_that_is_too_long_for_the_string_itself FROM t'"));
    const DbTableRowIterator iterator = database.begin();
    ASSERT_NE(iterator, database.end());

    EXPECT_TRUE(database.SqlQueryBegin(std::get<std::string>(iterator->cells.at(0).value)));

    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorTest, CloseReadTableReleasesTheQueryAndKeepsTheRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.CloseReadTable());
    EXPECT_TRUE(database.CloseReadTable()) << "without a query";

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    ExpectNoWalk();
}

TEST_F(DatabaseApiCursorTest, FetchAfterACompleteReadContinuesOnItsStatement)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();

    EXPECT_TRUE(database.ReadValues("SELECT b FROM t WHERE a=3", data));

    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(three)")) << "a finished statement starts over";
    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(0, ""));
}

// A row-by-row query that fails after its first row, and one that continues after the failure of another operation.

using DatabaseApiCursorFailureTest = FacadeTest;

TEST_F(DatabaseApiCursorFailureTest, FailedStepKeepsTheRowsAndClosingRepeatsItsError)
{
    const std::string failing = "SELECT abs(iif(a = 1, a, -9223372036854775808)) FROM t";
    const RawWalk raw = LegacyWalk(RawSqlite(path).Handle(), failing);
    ASSERT_NE(raw.step.code, SQLITE_DONE);
    ASSERT_NE(raw.finalize.code, SQLITE_OK);
    ASSERT_TRUE(database.SqlQueryBegin(failing));
    const DbTableRowValues& current = *database.begin();
    row.cells = {TextCell("kept")};

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasErrorOf(raw.step));
    EXPECT_TRUE(database.Failed());
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    {
        const SqliteCallRecorder sqlite;
        EXPECT_FALSE(database.CloseReadTable());
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
    }
    EXPECT_THAT(database, HasErrorOf(raw.finalize));
    ExpectNoWalk();
    EXPECT_TRUE(database.CloseReadTable());
    EXPECT_TRUE(database.SqlQueryBegin("SELECT 5")) << "the next query forgets the failure";
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

TEST_F(DatabaseApiEarlierFailureTest, FetchesConsumeRowsWithoutCellsUntilTheEnd)
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

TEST_F(DatabaseApiEarlierFailureTest, BeginConsumesARowAndReturnsTheEnd)
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
