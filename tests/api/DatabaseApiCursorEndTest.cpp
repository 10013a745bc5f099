#include <gmock/gmock.h>

#include <string>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What ends a row-by-row query, and what leaves it on its row.

class DatabaseApiCursorEndTest : public OpenFacade {
protected:
    DatabaseApiCursorEndTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 'one'), (2, 'two')"));
    }

    DbTableRowValues row;
};

TEST_F(DatabaseApiCursorEndTest, NewQueryEndsTheOneBefore)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    ASSERT_TRUE(database.ReadNextRow(row));
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.SqlQueryBegin("SELECT b FROM t"));

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_finalize(statement)", "sqlite3_prepare(handle, SELECT b FROM t, -1)"));
    EXPECT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorEndTest, RejectedQueryEndsTheOneBeforeAndEmptiesTheCurrentRow)
{
    const RawFailure plain = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT missing FROM t");
    ASSERT_NE(plain.code, 0);

    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();
    ASSERT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    EXPECT_FALSE(database.SqlQueryBegin(""));
    EXPECT_THAT(database, HasError(112, "Missing query SQL statement."));
    EXPECT_THAT(current.cells, IsEmpty());
    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));

    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    ASSERT_NE(database.begin(), database.end());
    EXPECT_FALSE(database.SqlQueryBegin("SELECT missing FROM t"));
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(current.cells, IsEmpty());
    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiCursorEndTest, SuccessfulQueryEmptiesTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();
    ASSERT_FALSE(current.cells.empty());

    EXPECT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));

    EXPECT_THAT(current.cells, IsEmpty());
}

TEST_F(DatabaseApiCursorEndTest, QueryMayBeBegunWithATextOfTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 'SELECT b AS a_name_long_enough_for_memory_of_its_own FROM t'"));
    const DbTableRowIterator iterator = database.begin();
    ASSERT_NE(iterator, database.end());

    EXPECT_TRUE(database.SqlQueryBegin(std::get<std::string>(iterator->cells.at(0).value)));

    EXPECT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(one)"));
}

TEST_F(DatabaseApiCursorEndTest, CloseReadTableReleasesTheQueryAndLeavesTheCurrentRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.CloseReadTable());

    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));
}

TEST_F(DatabaseApiCursorEndTest, CloseReadTableWithoutAQuerySucceeds)
{
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.CloseReadTable());

    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(DatabaseApiCursorEndTest, WholeReadEndsTheQueryAndTheNextFetchContinuesOnTheReadsStatement)
{
    DbTableData data;
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowValues& current = *database.begin();

    EXPECT_TRUE(database.ReadValues("SELECT b FROM t", data));

    EXPECT_THAT(CellTexts(current), ElementsAre("0:Integer int(1)"));
    EXPECT_TRUE(database.ReadNextRow(row)) << "a finished statement starts over";
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(one)"));
    EXPECT_TRUE(database.ReadNextRow(row));
    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DatabaseApiCursorEndTest, OtherOperationsLeaveTheQueryWhereItWas)
{
    int result = -1;
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_TRUE(database.Execute("CREATE TABLE IF NOT EXISTS t (a)"));
    EXPECT_TRUE(database.ExistsTable("t", result));
    EXPECT_TRUE(database.UpdateTableValues("t", {{"b"}, {{{TextCell("new")}}}}, "WHERE a=1"));
    EXPECT_TRUE(database.OpenDatabase(path, true));
    EXPECT_TRUE(database.PrepareStatement("SELECT 1").Step());
    EXPECT_FALSE(database.CloseDatabase());
    EXPECT_TRUE(database.Execute("SELECT 1"));

    EXPECT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)"));
}

} // namespace

} // namespace Morvik::sql::tests
