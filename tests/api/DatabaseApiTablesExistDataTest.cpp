#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "api/CountedTable.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using Texts = std::vector<std::string>;

class ExistDataTest : public CountedTable {};

TEST_F(ExistDataTest, CountsTheRows)
{
    EXPECT_EQ(Count("t", ""), 3);

    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(ExistDataTest, CountsTheRowsThatSatisfyTheCondition)
{
    EXPECT_EQ(Count("t", "WHERE a >= 2"), 2);
    EXPECT_EQ(result, 0);

    EXPECT_EQ(Count("t", "WHERE 0"), 0);
    EXPECT_EQ(result, 0);
}

TEST_F(ExistDataTest, TestsForTheTableAndThenAsksTheCountAlone)
{
    const SqliteCallRecorder recorded;

    Count("T", "");

    EXPECT_EQ(recorded.CallsOf("sqlite3_prepare"), (Texts{"sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)",
                                                          "sqlite3_prepare(handle, SELECT count(*) FROM T, -1)"}));
    EXPECT_EQ(recorded.CallsOf("sqlite3_step").size(), 2U);
    EXPECT_TRUE(recorded.Executed().empty());
}

TEST_F(ExistDataTest, ConditionFollowsAfterOneBlankAsGiven)
{
    const SqliteCallRecorder recorded;

    Count("t", " WHERE a = 'it''s' ");

    EXPECT_EQ(recorded.CallsOf("sqlite3_prepare").at(1),
              "sqlite3_prepare(handle, SELECT count(*) FROM t  WHERE a = 'it''s' , -1)");
}

TEST_F(ExistDataTest, AbsentTableHasNoRowsAndNoFailure)
{
    EXPECT_EQ(Count("absent", ""), 0);

    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(ExistDataTest, EmptyNameIsRefused)
{
    EXPECT_EQ(Count("", ""), 0);

    EXPECT_EQ(result, 112);
    EXPECT_THAT(database, HasError(112, "Missing table name."));
}

TEST_F(ExistDataTest, FailedExistenceTestIsReported)
{
    const RawFailure failure = FailureOfPrepare(RawSqlite(path).Handle(), TableExistsQuery("it's"));

    EXPECT_EQ(Count("it's", ""), 0);

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

TEST_F(ExistDataTest, TableThatIsNotFoundLeavesARowByRowWalkUndisturbed)
{
    BeginWalk();

    EXPECT_EQ(Count("absent", ""), 0);

    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_EQ(std::get<int>(row.cells.at(0).value), 2);
}

TEST_F(ExistDataTest, EndsARowByRowWalk)
{
    BeginWalk();

    EXPECT_EQ(Count("t", ""), 3);

    ExpectNoWalk();
}

TEST_F(ExistDataTest, LeavesNoQueryThatKeepsTheDatabaseOpen)
{
    Count("t", "");

    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(ExistDataTest, ResetsTheCodeAndKeepsTheEarlierMessage)
{
    FailWithMissingCommand();

    EXPECT_EQ(Count("t", ""), 3);

    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(ExistDataTest, QueryWithoutARowCountsNothing)
{
    EXPECT_EQ(Count("t", noCount), 0);

    EXPECT_EQ(result, 0);
    ExpectNoWalk();
}

TEST_F(ExistDataTest, OnlyTheFirstRowIsRead)
{
    EXPECT_EQ(Count("t", "GROUP BY a UNION ALL SELECT 'text'"), 1);

    EXPECT_EQ(result, 0);
}

TEST_F(ExistDataTest, CountIsCutToItsLow32Bits)
{
    EXPECT_EQ(Count("t", noCount + " UNION ALL SELECT 4294967301"), 5);
    EXPECT_EQ(result, 0);

    EXPECT_EQ(Count("t", noCount + " UNION ALL SELECT 2147483648"), -2147483647 - 1);
    EXPECT_EQ(result, 0);
}

} // namespace

} // namespace Morvik::sql::tests
