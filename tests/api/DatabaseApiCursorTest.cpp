#include <gmock/gmock.h>

#include <string>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DatabaseApiCursorTest : public OpenFacade {
protected:
    DatabaseApiCursorTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 'one'), (2, 'two')"));
    }

    DbTableRowValues row;
};

TEST_F(DatabaseApiCursorTest, QueryIsOpenedWithoutFetchingARow)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare(handle, SELECT a FROM t, -1)"));
}

TEST_F(DatabaseApiCursorTest, RowsComeInOrderAndTheEndLeavesTheLastRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));

    EXPECT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(1)", "1:Text string(one)"));
    EXPECT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)", "1:Text string(two)"));

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.Succeeded());
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)", "1:Text string(two)"));
}

TEST_F(DatabaseApiCursorTest, RowIsClearedBeforeItIsFilled)
{
    row.cells.assign(5, TextCell("old"));
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));

    EXPECT_TRUE(database.ReadNextRow(row));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(1)"));
}

TEST_F(DatabaseApiCursorTest, FetchAfterTheEndStartsOver)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t WHERE a=2"));
    ASSERT_TRUE(database.ReadNextRow(row));
    ASSERT_FALSE(database.ReadNextRow(row));

    EXPECT_TRUE(database.ReadNextRow(row));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)"));
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

TEST_F(DatabaseApiCursorTest, EndReplacesAnEarlierMessageAndBeginningDoesNot)
{
    FailWithMissingCommand();

    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t WHERE a=1"));
    EXPECT_THAT(database, HasError(0, "Missing command."));
    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DatabaseApiCursorTest, FetchWithoutAQueryFailsAndLeavesTheRow)
{
    row.cells = {TextCell("kept")};
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));

    EXPECT_TRUE(database.CloseReadTable());
    EXPECT_EQ(database.begin(), database.end());
    EXPECT_THAT(database, HasError(111, "Table isn't open."));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(kept)"));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST(DatabaseApiClosedTest, FetchAsksForAQueryNotForADatabase)
{
    DatabaseApi database;
    DbTableRowValues row;

    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_THAT(database, HasError(111, "Table isn't open."));
}

TEST(DatabaseApiClosedTest, QueryIsRejectedBeforeItsTextIsLookedAt)
{
    DatabaseApi database;
    const SqliteCallRecorder sqlite;

    for (const char* sql : {"SELECT 1", ""}) {
        EXPECT_FALSE(database.SqlQueryBegin(sql));
        EXPECT_THAT(database, HasError(111, "Database isn't open."));
    }
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(DatabaseApiCursorTest, TextWithoutAStatementBeginsNoQuery)
{
    EXPECT_TRUE(database.SqlQueryBegin("-- nothing"));
    EXPECT_THAT(database, HasError(0, ""));

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));
}

} // namespace

} // namespace Morvik::sql::tests
