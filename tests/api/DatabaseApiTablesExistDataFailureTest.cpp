#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <ostream>
#include <string>

#include "api/CountedTable.h"
#include "support/DatabaseContent.h"
#include "support/HasError.h"
#include "support/OomInjector.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

class ExistDataFailureTest : public CountedTable {};

TEST_F(ExistDataFailureTest, RejectedConditionLeavesSqlitesRecordAndNoQuery)
{
    const RawFailure failure = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT count(*) FROM t WHERE absent = 1");
    ASSERT_NE(failure.code, 0);
    BeginWalk();

    EXPECT_EQ(Count("t", "WHERE absent = 1"), 0);

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasError(failure.code, failure.message)); // closing would have reset the code
    ExpectNoWalk();
}

TEST_F(ExistDataFailureTest, FailedStepIsReportedByTheClosing)
{
    const std::string condition = "WHERE abs(-9223372036854775807 - a)";
    const PlainWalk walk = LegacyWalk(RawSqlite(path).Handle(), "SELECT count(*) FROM t " + condition);
    ASSERT_NE(walk.finalize.code, 0);

    EXPECT_EQ(Count("t", condition), 0);

    EXPECT_EQ(result, walk.finalize.code);
    EXPECT_THAT(database, HasError(walk.finalize.code, walk.finalize.message));
    ExpectNoWalk();
}

TEST_F(ExistDataFailureTest, RowWithoutCellsCountsNothing)
{
    SqliteCallRecorder recorded;
    recorded.ReplaceNextResult("sqlite3_column_count", 0, false);

    EXPECT_EQ(Count("t", ""), 0);

    EXPECT_FALSE(recorded.Pending());
    EXPECT_EQ(result, 0);
}

TEST_F(ExistDataFailureTest, CellThatCannotBeConvertedCountsNothingAndTheClosingResetsItsCode)
{
    SqliteCallRecorder recorded;
    recorded.ReplaceNextResult("sqlite3_column_value", 0, false);

    EXPECT_EQ(Count("t", ""), 0);

    EXPECT_FALSE(recorded.Pending());
    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, "No value exists."));
}

struct FirstCell {
    const char* name;
    const char* value;

    friend void PrintTo(const FirstCell& cell, std::ostream* stream) { *stream << cell.value; }
};

class ExistDataOfAnotherTypeTest : public CountedTable, public testing::WithParamInterface<FirstCell> {};

TEST_P(ExistDataOfAnotherTypeTest, IsACaughtException)
{
    const std::string condition = noCount + " UNION ALL SELECT " + GetParam().value;
    FailWithMissingCommand();
    BeginWalk();

    EXPECT_EQ(Count("t", condition), 0);

    EXPECT_EQ(result, 110);
    EXPECT_THAT(database, HasError(0, "Missing command.")); // unchanged by the exception, but closing reset its code
    ExpectNoWalk();
    EXPECT_TRUE(database.CloseDatabase());
}

INSTANTIATE_TEST_SUITE_P(FirstCells, ExistDataOfAnotherTypeTest,
                         testing::Values(FirstCell{"Text", "'text'"}, FirstCell{"Real", "2.5"},
                                         FirstCell{"Blob", "X'00'"}, FirstCell{"Null", "NULL"}),
                         [](const auto& cell) { return cell.param.name; });

TEST_F(ExistDataFailureTest, FailedClosingReplacesTheCodeOfACaughtException)
{
    SqliteCallRecorder recorded;
    recorded.ReplaceNextResult("sqlite3_finalize", SQLITE_IOERR, true, 1); // the first call ends the existence test

    EXPECT_EQ(Count("t", noCount + " UNION ALL SELECT 'text'"), 0);

    EXPECT_FALSE(recorded.Pending());
    EXPECT_EQ(recorded.CallsOf("sqlite3_finalize").size(), 2U);
    EXPECT_EQ(result, SQLITE_IOERR);
    EXPECT_EQ(database.GetLastError(), SQLITE_IOERR);
}

TEST_F(ExistDataFailureTest, FailedClosingIsReportedBesideTheCount)
{
    SqliteCallRecorder recorded;
    recorded.ReplaceNextResult("sqlite3_finalize", SQLITE_IOERR, true, 1);

    EXPECT_EQ(Count("t", ""), 3);

    EXPECT_FALSE(recorded.Pending());
    EXPECT_EQ(result, SQLITE_IOERR);
}

TEST_F(ExistDataFailureTest, EveryFailedAllocationIsACaughtException)
{
    const std::string condition = "WHERE a > 1 /* " + std::string(100, '-') + " */";
    int failures = 0;

    for (bool fired = true; fired; ++failures) {
        BeginWalk();
        int count = NotWritten;
        {
            const OomInjector failing(failures);
            EXPECT_NO_THROW(count = Count("t", condition));
            fired = failing.Fired();
        }
        EXPECT_EQ(count, fired ? 0 : 2) << "after " << failures << " allocations";
        EXPECT_EQ(result, fired ? 110 : 0) << "after " << failures << " allocations";
        ExpectNoWalk();
        EXPECT_TRUE(database.CloseReadTable());
    }

    EXPECT_GT(failures, 3) << "no allocation failed";
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_EQ(ContentOf(path), (DatabaseContent{{"t", {{"1"}, {"2"}, {"3"}}}}));
}

TEST(ClosedDatabaseApiTest, ExistDataLeavesWhatSqliteAnswersWithoutAConnection)
{
    const RawFailure failure = FailureOfPrepare(nullptr, TableExistsQuery("t"));
    DatabaseApi database;
    int result = 0;

    EXPECT_EQ(database.ExistData("t", "", result), 0);

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

} // namespace

} // namespace Morvik::sql::tests
