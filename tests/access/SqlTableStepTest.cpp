#include <sql/SqlTable.h>

#include "support/OpenConnection.h"
#include "support/RawLegacyStatement.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SqlTableStepTest : public ConnectedCursor {};

TEST_F(SqlTableStepTest, RowsEndWithCodeZeroAndStartAgain)
{
    table.Open("SELECT 7");
    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table.ReadNext()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.ReadNext()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_TRUE(table.IsOpen());
    EXPECT_EQ(table.Columns(), 1);

    EXPECT_EQ(NextInteger(table), 7);
}

TEST_F(SqlTableStepTest, EndOfAQueryWithoutRowsIsNoFailure)
{
    table.Open("SELECT 1 WHERE 0");

    EXPECT_FALSE(table.ReadNext());
    EXPECT_THAT(table, HasError(0, ""));
}

TEST_F(SqlTableStepTest, ClosedCursorMakesNoCallAndLeavesTheRecord)
{
    const std::string message = LeaveMessage();
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(table.ReadNext());
    EXPECT_TRUE(table.Reset());
    EXPECT_TRUE(table.Close());

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(table, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlTableStepTest, AnyOtherResultCountsAsAFailureWithAMessage)
{
    table.Open("SELECT 7");
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_OK, false);

    EXPECT_FALSE(table.ReadNext());

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(table, HasError(SQLITE_OK, sqlite3_errmsg(Handle())));
}

TEST_F(SqlTableStepTest, ResetRewindsToBeforeTheFirstRow)
{
    ReadRow("SELECT 7 UNION ALL SELECT 8");
    table.ReadNext();

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table.Reset()); }), ElementsAre("sqlite3_reset()"));
    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_EQ(NextInteger(table), 7);
}

// Statements whose step fails, run in the cursor and in a raw legacy statement. SQLite chooses the codes; the cursor
// must return the same code as the legacy interface.
struct FailingStep {
    const char* name;
    const char* sql;
    const char* meanwhile;
};

class SqlTableFailingStepTest : public ConnectedCursor, public testing::WithParamInterface<FailingStep> {
protected:
    SqlTableFailingStepTest()
    {
        RawSqlite(path).Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (1)");
        EXPECT_TRUE(table.Open(GetParam().sql));
        legacy.emplace(raw, GetParam().sql);
        other.Execute(GetParam().meanwhile);
    }

    RawSqlite other{path};
    RawSqlite raw{path};
    std::optional<RawLegacyStatement> legacy;
};

TEST_P(SqlTableFailingStepTest, LeavesTheCodeAndMessageOfTheLegacyInterface)
{
    const RawFailure step = legacy->Step();
    legacy->Reset();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.ReadNext()); }),
                ElementsAre("sqlite3_step()", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(table, HasError(step.code, step.message));
    EXPECT_NE(step.message, "");
    EXPECT_TRUE(table.IsOpen());
}

TEST_P(SqlTableFailingStepTest, ResetReportsTheStepAgainWithoutAMessage)
{
    legacy->Step();
    const RawFailure reset = legacy->Reset();
    table.ReadNext();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.Reset()); }), ElementsAre("sqlite3_reset()"));
    EXPECT_THAT(table, HasError(reset.code, ""));
    EXPECT_NE(reset.code, SQLITE_OK);
}

TEST_P(SqlTableFailingStepTest, CloseReportsTheStepAgainWithItsMessage)
{
    legacy->Step();
    const RawFailure finalize = legacy->Finalize();
    table.ReadNext();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.Close()); }),
                ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
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
