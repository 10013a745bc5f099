#include <new>
#include <string>

#include "api/FacadeTest.h"
#include "support/OomInjector.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A row-by-row query: its rows, and what ends it.

using DatabaseApiCursorTest = FacadeTest;

TEST_F(DatabaseApiCursorTest, QueryEndsTheEarlierOneAndFetchesNoRow)
{
    BeginWalk();
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.SqlQueryBegin("SELECT b FROM t"), Succeeded());

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_finalize(statement)", "sqlite3_prepare(handle, SELECT b FROM t, -1)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorTest, RowsAreInOrderAndTheEndKeepsTheLastRow)
{
    row.cells.assign(5, TextCell("old"));
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t WHERE a < 3"));

    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(1)", "1:Text string(one)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)", "1:Text string(two)"));
    ExpectEndOfRows();
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

    ExpectEndOfRows();
    EXPECT_EQ(database.begin(), database.end());
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
}

TEST_F(DatabaseApiCursorTest, FetchWithoutAQueryFailsAndLeavesTheRow)
{
    row.cells = {TextCell("kept")};
    const SqliteCallRecorder sqlite;

    ExpectNoWalk();
    EXPECT_EQ(database.begin(), database.end());
    EXPECT_THAT(database, HasError(111, "Table isn't open."));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(DatabaseApiCursorTest, RejectedQueryEndsTheEarlierOneAndEmptiesTheRow)
{
    for (const std::string sql : {"", "SELECT missing FROM t", "-- nothing"}) {
        SCOPED_TRACE(sql);
        const DbTableRowValues& current = BeginWalk();
        ASSERT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));

        EXPECT_EQ(database.SqlQueryBegin(sql), sql == "-- nothing") << "a text without a statement is no failure";

        EXPECT_THAT(current.cells, IsEmpty());
        ExpectNoWalk();
    }
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiCursorTest, QueryTextMayBeInTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 'SELECT b AS a_name_that_is_too_long_for_the_string_itself FROM t'"));
    const DbTableRowValues& current = *database.begin();

    EXPECT_TRUE(database.SqlQueryBegin(std::get<std::string>(current.cells.at(0).value)));

    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorTest, CloseReadTableReleasesTheQueryAndKeepsTheRow)
{
    const DbTableRowValues& current = BeginWalk();
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.CloseReadTable(), Succeeded());
    EXPECT_THAT(database.CloseReadTable(), Succeeded()) << "without a query";

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    ExpectNoWalk();
}

TEST_F(DatabaseApiCursorTest, FetchAfterACompleteReadContinuesOnItsStatement)
{
    const DbTableRowValues& current = BeginWalk();

    EXPECT_TRUE(database.ReadValues("SELECT b FROM t WHERE a=3", data));

    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(three)")) << "a finished statement starts over";
    ExpectEndOfRows();
}

TEST_F(DatabaseApiCursorTest, FailedStepKeepsTheRowsAndClosingRepeatsItsError)
{
    const std::string failing = "SELECT abs(iif(a = 1, a, -9223372036854775808)) FROM t";
    const RawWalk raw = LegacyWalk(RawSqlite(path).Handle(), failing);
    ASSERT_TRUE(database.SqlQueryBegin(failing));
    const DbTableRowValues& current = *database.begin();
    row.cells = {TextCell("kept")};

    EXPECT_THAT(database.ReadNextRow(row), FailedWith(raw.step));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));

    EXPECT_THAT(database.CloseReadTable(), FailedWith(raw.finalize));
    ExpectNoWalk();
    EXPECT_TRUE(database.CloseReadTable());
}

// A walk that continues after the failure of another operation or of a conversion.

using DatabaseApiEarlierFailureTest = FacadeTest;

TEST_F(DatabaseApiEarlierFailureTest, FetchesConsumeRowsWithoutCellsUntilTheEnd)
{
    BeginWalk();
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    for (int fetch = 2; fetch <= 3; ++fetch) {
        row.cells = {TextCell("old")};
        EXPECT_THAT(database.ReadNextRow(row), FailedWith(112, "Missing command."));
        EXPECT_THAT(row.cells, IsEmpty());
    }
    row.cells = {TextCell("kept")};
    ExpectEndOfRows();

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 3U);
}

TEST_F(DatabaseApiEarlierFailureTest, BeginConsumesARowAndReturnsTheEnd)
{
    const DbTableRowValues& current = BeginWalk();
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
        EXPECT_THAT(database.ReadNextRow(row), FailedWith(112, "Unknown value type."));
        EXPECT_THAT(row.cells, IsEmpty());
    }
    ExpectEndOfRows();
    EXPECT_FALSE(sqlite.Pending());
}

} // namespace

} // namespace Morvik::sql::tests
