#include <string>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ExistsTableTest : public FacadeTest {
protected:
    bool Exists(const std::string& table)
    {
        result = NotWritten;
        return database.ExistsTable(table, result);
    }
};

TEST_F(ExistsTableTest, FindsATableAndIgnoresLetterCase)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE sensor_log (a)"));

    for (const std::string name : {"sensor_log", "Sensor_Log"}) {
        EXPECT_TRUE(Exists(name)) << name;
        EXPECT_EQ(result, 0) << name;
        EXPECT_THAT(database, HasError(0, "")) << name;
    }
    EXPECT_TRUE(database.CloseDatabase()) << "the query is released";
}

TEST_F(ExistsTableTest, OnlyTheCompleteNameOfATableExists)
{
    ASSERT_TRUE(database.Execute("CREATE VIEW overview AS SELECT a FROM t; CREATE INDEX sorted ON t (a);"
                                 "CREATE TEMP TABLE passing (a)"));

    for (const std::string name : {"absent", "oth", "other2", "oth%", "%", "_", " t", "t ", "overview", "sorted",
                                   "passing", "sqlite_master", "main.t"}) {
        EXPECT_FALSE(Exists(name)) << name;
        EXPECT_EQ(result, 0) << name;
        EXPECT_THAT(database, HasError(0, "")) << name;
    }
    EXPECT_TRUE(database.CloseDatabase()) << "the query is released";
}

TEST_F(ExistsTableTest, EmptyNameIsRejectedWithoutCallingSqlite)
{
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(Exists(""));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_EQ(result, 112);
    EXPECT_THAT(database, HasError(112, "Missing table name."));
}

TEST_F(ExistsTableTest, RunsOneQueryForOneRowAndReleasesIt)
{
    const IDatabaseApi& constant = database;
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(constant.ExistsTable("t", result));

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("t") + ", -1)",
                                            "sqlite3_step()", "sqlite3_finalize(statement)"));
}

TEST_F(ExistsTableTest, QueryThatCannotBePreparedLeavesSqlitesError)
{
    const RawFailure failure = RejectedQuery(TableExistsQuery("it's"));

    EXPECT_FALSE(Exists("it's"));

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasErrorOf(failure));
    EXPECT_TRUE(database.CloseDatabase()) << "the query is released";
}

TEST_F(ExistsTableTest, NameCanContinueTheQueryBecauseItsApostrophesAreNotDoubled)
{
    EXPECT_TRUE(Exists("absent' OR name = 'other"));
    EXPECT_EQ(result, 0);
}

TEST_F(ExistsTableTest, FailedStepCountsAsNoSuchTableAndLeavesNoError)
{
    ASSERT_TRUE(Exists("t")); // so that SQLite knows the schema, and only the step must read the locked file
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(Exists("t"));

    EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 1U);
    EXPECT_FALSE(sqlite.CallsOf("sqlite3_errmsg").empty()) << "the step did not fail";
    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
}

} // namespace

} // namespace Morvik::sql::tests
