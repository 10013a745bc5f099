#include <sqlite3.h>

#include <cstdint>
#include <ostream>
#include <string>

#include "api/FacadeTest.h"
#include "support/DatabaseContent.h"
#include "support/OomInjector.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ExistsTableTest : public FacadeTest {
protected:
    void Expect(const std::string& table, bool exists, const RawFailure& failure = {})
    {
        result = NotWritten;
        EXPECT_EQ(database.ExistsTable(table, result), exists) << table;
        EXPECT_EQ(result, failure.code) << table;
        EXPECT_THAT(database, HasErrorOf(failure)) << table;
    }
};

TEST_F(ExistsTableTest, FindsOnlyCompleteNamesInAnyLetterCase)
{
    ASSERT_TRUE(database.Execute("CREATE VIEW overview AS SELECT a FROM t; CREATE INDEX sorted ON t (a);"
                                 "CREATE TEMP TABLE passing (a); CREATE TABLE sensor_log (a)"));

    Expect("sensor_log", true);
    Expect("Sensor_Log", true);
    Expect("absent' OR name = 'other", true); // apostrophes are not doubled, so a name can continue the query
    for (const std::string name : {"absent", "oth", "other2", "oth%", "%", "_", " t", "t ", "overview", "sorted",
                                   "passing", "sqlite_master", "main.t"}) {
        Expect(name, false);
    }
    EXPECT_TRUE(database.CloseDatabase()) << "the queries are released";
}

TEST_F(ExistsTableTest, RunsOneQueryForOneRowAndReleasesIt)
{
    const IDatabaseApi& constant = database;
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(constant.ExistsTable("t", result));

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("t") + ", -1)",
                                            "sqlite3_step()", "sqlite3_finalize(statement)"));
}

TEST_F(ExistsTableTest, EmptyNameAndRejectedQueryAreFailures)
{
    {
        const SqliteCallRecorder sqlite;
        Expect("", false, {112, "Missing table name."});
        EXPECT_THAT(sqlite.Calls(), IsEmpty());
    }
    Expect("it's", false, RejectedQuery(TableExistsQuery("it's")));
    EXPECT_TRUE(database.CloseDatabase()) << "the query is released";
}

TEST_F(ExistsTableTest, FailedStepCountsAsAnAbsentTable)
{
    Expect("t", true); // SQLite reads the schema, so only the next step must read the locked file
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const SqliteCallRecorder sqlite;

    Expect("t", false);

    EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 1U);
    EXPECT_FALSE(sqlite.CallsOf("sqlite3_errmsg").empty()) << "the step did not fail";
}

class ExistDataTest : public FacadeTest {
protected:
    int Count(const std::string& table, const std::string& condition)
    {
        result = NotWritten;
        return database.ExistData(table, condition, result);
    }

    /// Checks that the count fails with the error of raw SQLite.
    void ExpectFailure(const std::string& table, const std::string& condition, const RawFailure& failure)
    {
        EXPECT_NE(failure.code, 0);
        EXPECT_EQ(Count(table, condition), 0);
        EXPECT_EQ(result, failure.code);
        EXPECT_THAT(database, HasErrorOf(failure));
    }

    /// A condition with which the count itself returns no row, so that a row appended with UNION becomes the first.
    const std::string noCount = "WHERE 0 GROUP BY a";
};

struct Counted {
    const char* name;
    const char* condition;
    int count;

    friend void PrintTo(const Counted& counted, std::ostream* stream) { *stream << counted.condition; }
};

class SuccessfulExistDataTest : public ExistDataTest, public testing::WithParamInterface<Counted> {};

TEST_P(SuccessfulExistDataTest, ReturnsTheFirstCellAndEndsAWalk)
{
    BeginWalk();

    EXPECT_EQ(Count("t", GetParam().condition), GetParam().count);

    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
    ExpectNoWalk();
    EXPECT_TRUE(database.CloseDatabase()) << "no query is held";
}

INSTANTIATE_TEST_SUITE_P(
    Conditions, SuccessfulExistDataTest,
    testing::Values(Counted{"AllRows", "", 3}, Counted{"SomeRows", "WHERE a >= 2", 2}, Counted{"NoRows", "WHERE 0", 0},
                    Counted{"QueryWithoutARow", "WHERE 0 GROUP BY a", 0},
                    Counted{"OnlyTheFirstRow", "GROUP BY a UNION ALL SELECT 'text'", 1},
                    Counted{"CutToItsLow32Bits", "WHERE 0 GROUP BY a UNION ALL SELECT 4294967301", 5},
                    Counted{"CutToANegativeNumber", "WHERE 0 GROUP BY a UNION ALL SELECT 2147483648", INT32_MIN}),
    [](const auto& counted) { return counted.param.name; });

TEST_F(ExistDataTest, TestsForTheTableAndThenRunsOnlyTheCount)
{
    const SqliteCallRecorder sqlite;

    Count("T", "");

    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)",
                            "sqlite3_prepare(handle, SELECT count(*) FROM T, -1)"));
    EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 2U);
    EXPECT_THAT(sqlite.Executed(), IsEmpty());
}

TEST_F(ExistDataTest, ConditionFollowsAfterOneBlankAsGiven)
{
    const SqliteCallRecorder sqlite;
    Count("t", " WHERE a = 'it''s' ");
    EXPECT_EQ(sqlite.CallsOf("sqlite3_prepare").at(1),
              "sqlite3_prepare(handle, SELECT count(*) FROM t  WHERE a = 'it''s' , -1)");
}

TEST_F(ExistDataTest, AbsentTableHasNoRowsAndNoFailure)
{
    EXPECT_EQ(Count("absent", ""), 0);
    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(ExistDataTest, FailedTestForTheTableIsReported)
{
    ExpectFailure("", "", {112, "Missing table name."});
    ExpectFailure("it's", "", RejectedQuery(TableExistsQuery("it's")));
}

TEST_F(ExistDataTest, RejectedConditionLeavesSqlitesErrorAndNoQuery)
{
    BeginWalk();
    ExpectFailure("t", "WHERE absent = 1", RejectedQuery("SELECT count(*) FROM t WHERE absent = 1"));
    ExpectNoWalk();
}

TEST_F(ExistDataTest, FailedStepIsReportedByTheClosing)
{
    const std::string condition = "WHERE abs(-9223372036854775807 - a)";
    const RawWalk raw = LegacyWalk(RawSqlite(path).Handle(), "SELECT count(*) FROM t " + condition);

    ExpectFailure("t", condition, raw.finalize);

    ExpectNoWalk();
}

TEST_F(ExistDataTest, RowThatCannotBeConvertedCountsNothing)
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_column_count", 0, false);
    EXPECT_EQ(Count("t", ""), 0);
    EXPECT_EQ(result, 0);

    sqlite.ReplaceNextResult("sqlite3_column_value", 0, false);
    EXPECT_EQ(Count("t", ""), 0);
    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, "No value exists.")) << "closing resets the code";
    EXPECT_FALSE(sqlite.Pending());
}

TEST_F(ExistDataTest, FirstCellOfAnotherTypeIsACaughtException)
{
    for (const std::string value : {"'text'", "2.5", "X'00'", "NULL"}) {
        FailWithMissingCommand();
        BeginWalk();

        EXPECT_EQ(Count("t", noCount + " UNION ALL SELECT " + value), 0) << value;

        EXPECT_EQ(result, 110) << value;
        EXPECT_THAT(database, HasError(0, "Missing command."))
            << "the exception changes neither, closing resets the code";
        ExpectNoWalk();
    }
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(ExistDataTest, FailedClosingIsReportedWithTheCount)
{
    for (const auto& [condition, count] :
         {std::pair(std::string(), 3), std::pair(noCount + " UNION ALL SELECT 'text'", 0)}) {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_finalize", SQLITE_IOERR, true, 1); // the first call ends the existence test

        EXPECT_EQ(Count("t", condition), count);

        EXPECT_FALSE(sqlite.Pending());
        EXPECT_EQ(sqlite.CallsOf("sqlite3_finalize").size(), 2U);
        EXPECT_EQ(result, SQLITE_IOERR);
        EXPECT_EQ(database.GetLastError(), SQLITE_IOERR);
    }
}

TEST_F(ExistDataTest, EveryFailedAllocationIsACaughtException)
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
    EXPECT_THAT(ContentOf(path).at("t"),
                ElementsAre(ElementsAre("1", "'one'"), ElementsAre("2", "'two'"), ElementsAre("3", "'three'")));
}

} // namespace

} // namespace Morvik::sql::tests
