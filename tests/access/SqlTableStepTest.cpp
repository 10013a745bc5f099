#include <sql/SqlTable.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <optional>
#include <string>
#include <utility>

#include "support/HasError.h"
#include "support/RawLegacyStatement.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SqlTableStepTest : public WithOpenDatabase {
protected:
    const SqlTable table{database};
};

TEST_F(SqlTableStepTest, RowsEndWithCodeZeroAndNoMessage)
{
    table.Open("SELECT 1");
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(table.ReadNext());
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));
    EXPECT_FALSE(table.ReadNext());
    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_TRUE(table.IsOpen());
    EXPECT_EQ(table.Columns(), 1);
    EXPECT_THAT(sqlite.CallsOf("sqlite3_step"), ElementsAre("sqlite3_step()", "sqlite3_step()"));
    EXPECT_THAT(sqlite.CallsOf("sqlite3_errmsg"), IsEmpty());
}

TEST_F(SqlTableStepTest, EndOfAQueryWithoutRowsIsNoFailure)
{
    table.Open("SELECT 1 WHERE 0");

    const bool read = table.ReadNext();

    EXPECT_FALSE(read);
    EXPECT_THAT(table, HasError(0, ""));
}

TEST_F(SqlTableStepTest, ReadAfterTheEndStartsOver)
{
    table.Open("SELECT 7");
    table.ReadNext();
    table.ReadNext();

    const bool read = table.ReadNext();

    EXPECT_TRUE(read);
    EXPECT_EQ(table.GetInteger(0), 7);
}

TEST_F(SqlTableStepTest, ReadOnAClosedCursorLeavesTheRecord)
{
    table.Open("nonsense");
    const std::string message = table.GetLastErrorMsg();
    const SqliteCallRecorder sqlite;

    const bool read = table.ReadNext();

    EXPECT_FALSE(read);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(table, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlTableStepTest, AnyOtherResultCountsAsAFailureWithAMessage)
{
    table.Open("SELECT 7");
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_OK, false);

    const bool read = table.ReadNext();

    EXPECT_FALSE(read);
    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(table, HasError(SQLITE_OK, sqlite3_errmsg(database.GetNativeDatabaseInstance<sqlite3>())));
}

TEST_F(SqlTableStepTest, ResetRewindsToBeforeTheFirstRow)
{
    table.Open("SELECT 7 UNION ALL SELECT 8");
    table.ReadNext();
    table.ReadNext();
    const SqliteCallRecorder sqlite;

    const bool reset = table.Reset();

    EXPECT_TRUE(reset);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_reset()"));
    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_TRUE(table.ReadNext());
    EXPECT_EQ(table.GetInteger(0), 7);
}

TEST_F(SqlTableStepTest, ResetOfAClosedCursorSucceedsAndLeavesTheRecord)
{
    table.Open("nonsense");
    const std::string message = table.GetLastErrorMsg();
    const SqliteCallRecorder sqlite;

    const bool reset = table.Reset();

    EXPECT_TRUE(reset);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(table, HasError(SQLITE_ERROR, message));
}

// Statements whose step fails, run in the cursor and in a raw legacy statement. SQLite chooses the codes; the cursor
// must return the same code as the legacy interface.
struct FailingStep {
    const char* name;
    const char* sql;
    const char* meanwhile;
};

class SqlTableFailingStepTest : public SqlTableStepTest, public testing::WithParamInterface<FailingStep> {
protected:
    SqlTableFailingStepTest()
    {
        RawSqlite(path).Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (1)");
        EXPECT_TRUE(table.Open(GetParam().sql));
        legacy.emplace(*plain, GetParam().sql);
        other.Execute(GetParam().meanwhile);
    }

    RawSqlite other{path};
    std::optional<RawSqlite> plain{std::in_place, path};
    std::optional<RawLegacyStatement> legacy;
};

TEST_P(SqlTableFailingStepTest, LeavesTheCodeAndMessageOfTheLegacyInterface)
{
    const RawFailure step = legacy->Step();
    legacy->Reset();
    const SqliteCallRecorder sqlite;

    const bool read = table.ReadNext();

    EXPECT_FALSE(read);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_step()", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(table, HasError(step.code, step.message));
    EXPECT_NE(step.message, "");
    EXPECT_TRUE(table.IsOpen());
}

TEST_P(SqlTableFailingStepTest, ResetReportsTheStepAgainWithoutAMessage)
{
    legacy->Step();
    const RawFailure reset = legacy->Reset();
    table.ReadNext();
    const SqliteCallRecorder sqlite;

    const bool succeeded = table.Reset();

    EXPECT_FALSE(succeeded);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_reset()"));
    EXPECT_THAT(table, HasError(reset.code, ""));
    EXPECT_NE(reset.code, SQLITE_OK);
}

TEST_P(SqlTableFailingStepTest, CloseReportsTheStepAgainWithItsMessageAndReleasesTheQuery)
{
    legacy->Step();
    const RawFailure finalize = legacy->Finalize();
    table.ReadNext();
    const SqliteCallRecorder sqlite;

    const bool closed = table.Close();

    EXPECT_FALSE(closed);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(table, HasError(finalize.code, finalize.message));
    EXPECT_NE(finalize.message, "");
    EXPECT_FALSE(table.IsOpen());
    EXPECT_TRUE(database.Close());
}

INSTANTIATE_TEST_SUITE_P(Steps, SqlTableFailingStepTest,
                         testing::Values(FailingStep{"Constraint", "INSERT INTO t VALUES (1)", ""},
                                         FailingStep{"RunTimeError", "SELECT abs(-9223372036854775807 - 1)", ""},
                                         FailingStep{"SchemaChange", "SELECT * FROM t", "ALTER TABLE t ADD COLUMN b"},
                                         FailingStep{"Locked", "SELECT * FROM t", "BEGIN EXCLUSIVE"}),
                         [](const auto& failingStep) { return failingStep.param.name; });

} // namespace

} // namespace Morvik::sql::tests
