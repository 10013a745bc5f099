#include <string>

#include "api/FacadeTest.h"
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

TEST_F(DatabaseApiCursorTest, RowsComeInOrderAndTheEndLeavesTheLastRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t WHERE a < 3"));

    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(1)", "1:Text string(one)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)", "1:Text string(two)"));
    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.Succeeded());
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)", "1:Text string(two)"));
}

TEST_F(DatabaseApiCursorTest, RowIsClearedBeforeItIsFilled)
{
    row.cells.assign(5, TextCell("old"));
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(1)"));
}

TEST_F(DatabaseApiCursorTest, FetchAfterTheEndStartsOver)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t WHERE a=2"));
    ASSERT_TRUE(database.ReadNextRow(row));
    ASSERT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)"));
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
    EXPECT_EQ(database.begin(), database.end());
    EXPECT_THAT(database, HasError(111, "Table isn't open."));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(DatabaseApiCursorTest, TextWithoutAStatementBeginsNoQuery)
{
    EXPECT_TRUE(database.SqlQueryBegin("-- nothing"));
    EXPECT_THAT(database, HasError(0, ""));
    ExpectNoWalk();
}

TEST_F(DatabaseApiCursorTest, NewQueryEndsTheOneBefore)
{
    BeginWalk();
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.SqlQueryBegin("SELECT b FROM t"));

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_finalize(statement)", "sqlite3_prepare(handle, SELECT b FROM t, -1)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorTest, RejectedQueryEndsTheOneBeforeAndEmptiesTheCurrentRow)
{
    const RawFailure failure = RejectedQuery("SELECT missing FROM t");
    for (const auto& [sql, error] : {std::pair("", RawFailure{112, "Missing query SQL statement."}),
                                     std::pair("SELECT missing FROM t", failure)}) {
        ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
        const DbTableRowValues& current = *database.begin();
        ASSERT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));

        EXPECT_FALSE(database.SqlQueryBegin(sql));

        EXPECT_THAT(database, HasErrorOf(error));
        EXPECT_THAT(current.cells, IsEmpty());
        ExpectNoWalk();
    }
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiCursorTest, SuccessfulQueryEmptiesTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();
    ASSERT_FALSE(current.cells.empty());

    EXPECT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));

    EXPECT_THAT(current.cells, IsEmpty());
}

TEST_F(DatabaseApiCursorTest, QueryMayBeBegunWithATextOfTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 'SELECT b AS a_name_that_is_too_long_for_the_string_itself FROM t'"));
    const DbTableRowIterator iterator = database.begin();
    ASSERT_NE(iterator, database.end());

    EXPECT_TRUE(database.SqlQueryBegin(std::get<std::string>(iterator->cells.at(0).value)));

    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorTest, CloseReadTableReleasesTheQueryAndLeavesTheCurrentRow)
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

TEST_F(DatabaseApiCursorTest, CompleteReadEndsTheQueryAndTheNextFetchContinuesOnTheReadsStatement)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();

    EXPECT_TRUE(database.ReadValues("SELECT b FROM t WHERE a=3", data));

    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    EXPECT_THAT(NextRow(), ElementsAre("0:Text string(three)")) << "a finished statement starts over";
    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(0, ""));
}

} // namespace

} // namespace Morvik::sql::tests
