#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/HasError.h"
#include "support/OpenFacade.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

constexpr int NotWritten = -77;

class ExistsTableTest : public OpenFacade {
protected:
    ExistsTableTest()
    {
        RawSqlite(path).Execute("CREATE TABLE sensor_log (a); INSERT INTO sensor_log VALUES (1), (2);"
                                "CREATE VIEW overview AS SELECT a FROM sensor_log;"
                                "CREATE INDEX sorted ON sensor_log (a)");
    }

    bool Exists(const std::string& table)
    {
        result = NotWritten;
        return database.ExistsTable(table, result);
    }

    int result = NotWritten;
};

TEST_F(ExistsTableTest, FindsATable)
{
    EXPECT_TRUE(Exists("sensor_log"));

    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(ExistsTableTest, IgnoresLetterCase)
{
    EXPECT_TRUE(Exists("Sensor_Log"));

    EXPECT_EQ(result, 0);
}

TEST_F(ExistsTableTest, AbsentTableIsNoFailure)
{
    EXPECT_FALSE(Exists("absent"));

    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(ExistsTableTest, ComparesTheWholeName)
{
    for (const std::string name : {"sensor", "sensor_log2", "sensor%", "sensor-log", " sensor_log", "%"}) {
        EXPECT_FALSE(Exists(name)) << name;
        EXPECT_EQ(result, 0) << name;
    }
}

TEST_F(ExistsTableTest, ViewsIndexesAndTemporaryTablesAreNoTables)
{
    ASSERT_TRUE(database.Execute("CREATE TEMP TABLE passing (a)"));

    for (const std::string name : {"overview", "sorted", "passing", "sqlite_master"}) {
        EXPECT_FALSE(Exists(name)) << name;
        EXPECT_EQ(result, 0) << name;
    }
}

TEST_F(ExistsTableTest, EmptyNameIsRefusedWithoutAskingSqlite)
{
    const SqliteCallRecorder recorded;

    EXPECT_FALSE(Exists(""));

    EXPECT_TRUE(recorded.Calls().empty());
    EXPECT_EQ(result, 112);
    EXPECT_THAT(database, HasError(112, "Missing table name."));
}

TEST_F(ExistsTableTest, AsksOneQueryForOneRowAndReleasesIt)
{
    const SqliteCallRecorder recorded;

    ASSERT_TRUE(Exists("sensor_log"));

    const std::vector<std::string> calls{"sqlite3_prepare(handle, " + TableExistsQuery("sensor_log") + ", -1)",
                                         "sqlite3_step()", "sqlite3_finalize(statement)"};
    EXPECT_EQ(recorded.Calls(), calls);
}

TEST_F(ExistsTableTest, HoldsTheDatabaseOpenNoLonger)
{
    Exists("sensor_log");
    Exists("absent");
    Exists("it's");

    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(ExistsTableTest, ResetsTheCodeAndKeepsTheEarlierMessage)
{
    FailWithMissingCommand();
    EXPECT_TRUE(Exists("sensor_log"));
    EXPECT_THAT(database, HasError(0, "Missing command."));

    FailWithMissingCommand();
    EXPECT_FALSE(Exists("absent"));
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(ExistsTableTest, QueryThatCannotBePreparedLeavesSqlitesRecord)
{
    const RawFailure failure = FailureOfPrepare(RawSqlite(path).Handle(), TableExistsQuery("it's"));
    ASSERT_NE(failure.code, 0);

    EXPECT_FALSE(Exists("it's"));

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

TEST_F(ExistsTableTest, NameCanContinueTheQueryBecauseItsApostrophesAreNotDoubled)
{
    EXPECT_TRUE(Exists("absent' OR name = 'sensor_log"));

    EXPECT_EQ(result, 0);
}

TEST_F(ExistsTableTest, FailedStepCountsAsNoSuchTableAndIsNotRecorded)
{
    ASSERT_TRUE(Exists("sensor_log")); // so that SQLite knows the schema, and only the step must read the locked file
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const SqliteCallRecorder recorded;

    const bool exists = Exists("sensor_log");

    EXPECT_EQ(recorded.CallsOf("sqlite3_step").size(), 1U);
    EXPECT_FALSE(recorded.CallsOf("sqlite3_errmsg").empty()) << "the step did not fail";
    EXPECT_FALSE(exists);
    EXPECT_EQ(result, 0);
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(ExistsTableTest, LeavesARowByRowWalkUndisturbed)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM sensor_log"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_TRUE(Exists("sensor_log"));
    EXPECT_FALSE(Exists("absent"));

    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_EQ(std::get<int>(row.cells.at(0).value), 2);
}

TEST_F(ExistsTableTest, CanBeAskedThroughAConstInterface)
{
    const IDatabaseApi& interface = database;

    EXPECT_TRUE(interface.ExistsTable("sensor_log", result));
}

TEST(ClosedDatabaseApiTest, ExistsTableLeavesWhatSqliteAnswersWithoutAConnection)
{
    const RawFailure failure = FailureOfPrepare(nullptr, TableExistsQuery("t"));
    ASSERT_NE(failure.code, 0);
    const DatabaseApi database;
    int result = NotWritten;

    EXPECT_FALSE(database.ExistsTable("t", result));

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

TEST(ClosedDatabaseApiTest, ExistsTableLooksAtTheName)
{
    const DatabaseApi database;
    int result = NotWritten;

    EXPECT_FALSE(database.ExistsTable("", result));

    EXPECT_EQ(result, 112);
    EXPECT_THAT(database, HasError(112, "Missing table name."));
}

} // namespace

} // namespace Morvik::sql::tests
