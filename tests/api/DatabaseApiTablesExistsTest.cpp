#include <cstdint>
#include <string>
#include <utility>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/OomInjector.h"
#include "support/ReferenceRendering.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ExistsTableTest : public FacadeTest {
protected:
    bool Exists(const std::string& table)
    {
        result = NotWritten;
        const bool exists = database.ExistsTable(table, result);
        EXPECT_EQ(result, 0) << table;
        EXPECT_THAT(database, HasError(0, "")) << table;
        return exists;
    }
};

TEST_F(ExistsTableTest, FindsOnlyCompleteNamesInAnyLetterCase)
{
    ASSERT_TRUE(database.Execute("CREATE VIEW overview AS SELECT a FROM t; CREATE INDEX sorted ON t (a);"
                                 "CREATE TEMP TABLE passing (a); CREATE TABLE sensor_log (a)"));

    EXPECT_TRUE(Exists("sensor_log"));
    EXPECT_TRUE(Exists("Sensor_Log"));
    EXPECT_TRUE(Exists("absent' OR name = 'other")); // apostrophes are not doubled, so a name can continue the query
    for (const std::string name : {"absent", "oth", "other2", "oth%", "%", "_", " t", "t ", "overview", "sorted",
                                   "passing", "sqlite_master", "main.t"}) {
        EXPECT_FALSE(Exists(name)) << name;
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

TEST_F(ExistsTableTest, FailedStepCountsAsAnAbsentTable)
{
    EXPECT_TRUE(Exists("t")); // SQLite reads the schema, so only the next step must read the locked file
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(Exists("t"));

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

    /// A condition with which the count itself returns no row, so that a row appended with UNION becomes the first.
    const std::string noCount = "WHERE 0 GROUP BY a";
};

TEST_F(ExistDataTest, ReturnsTheFirstCellAndEndsAWalk)
{
    const std::pair<std::string, int> counts[] = {{"", 3},
                                                  {"WHERE a >= 2", 2},
                                                  {"WHERE 0", 0},
                                                  {noCount, 0},
                                                  {"GROUP BY a UNION ALL SELECT 'text'", 1},
                                                  {noCount + " UNION ALL SELECT 4294967301", 5},
                                                  {noCount + " UNION ALL SELECT 2147483648", INT32_MIN}};
    for (const auto& [condition, count] : counts) {
        SCOPED_TRACE(condition);
        BeginWalk();

        EXPECT_EQ(Count("t", condition), count);

        EXPECT_EQ(result, 0);
        EXPECT_TRUE(database.Succeeded());
        ExpectNoWalk();
    }
    EXPECT_TRUE(database.CloseDatabase()) << "no query is held";
}

TEST_F(ExistDataTest, TestsForTheTableAndThenRunsOnlyTheCount)
{
    const SqliteCallRecorder sqlite;

    Count("T", "");
    Count("t", " WHERE a = 'it''s' ");

    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)",
                            "sqlite3_prepare(handle, SELECT count(*) FROM T, -1)",
                            "sqlite3_prepare(handle, " + TableExistsQuery("t") + ", -1)",
                            "sqlite3_prepare(handle, SELECT count(*) FROM t  WHERE a = 'it''s' , -1)"));
    EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 4U);
    EXPECT_THAT(sqlite.Executed(), IsEmpty());
}

TEST_F(ExistDataTest, FailureIsReportedAndEndsAWalk)
{
    const std::string failing = "WHERE abs(-9223372036854775807 - a)";
    const RawFailure closed = LegacyWalk(RawSqlite(path).Handle(), "SELECT count(*) FROM t " + failing).finalize;
    for (const auto& [condition, failure] :
         {std::pair(std::string("WHERE absent = 1"), RejectedQuery("SELECT count(*) FROM t WHERE absent = 1")),
          std::pair(failing, closed)}) {
        BeginWalk();

        EXPECT_EQ(Count("t", condition), 0);

        EXPECT_EQ(result, failure.code);
        EXPECT_THAT(database, HasErrorOf(failure));
        ExpectNoWalk();
    }
}

TEST_F(ExistDataTest, RowThatCannotBeConvertedGivesZero)
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

TEST_F(ExistDataTest, FailedAllocationIsACaughtException)
{
    int count = NotWritten;
    {
        const OomInjector failing(0);
        EXPECT_NO_THROW(count = database.ExistData("t", "WHERE a > 1", result));
    }

    EXPECT_EQ(count, 0);
    EXPECT_EQ(result, 110);
    EXPECT_THAT(database, HasError(0, ""));
}

} // namespace

} // namespace Morvik::sql::tests
