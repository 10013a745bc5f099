#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>

#include "support/AbandonedConnection.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SqlCommandStepTest : public WithOpenDatabase {
protected:
    SqlCommandStepTest() { command.Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (1)"); }

    // Leaves a failure's message in the record, so that a test can check whether it stays.
    std::string LeaveMessage()
    {
        EXPECT_FALSE(command.Execute("nonsense"));
        EXPECT_NE(command.GetLastErrorMsg(), "");
        return command.GetLastErrorMsg();
    }

    // Prepares a statement whose step fails, and returns the result of the same statement in raw SQLite.
    RawFailure PrepareFailingStep()
    {
        static constexpr char Sql[] = "INSERT INTO t VALUES (1)";
        EXPECT_TRUE(command.Prepare(Sql));
        return FailureOfExec(RawSqlite(path).Handle(), Sql);
    }

    SqlCommand command{database};
};

TEST_F(SqlCommandStepTest, RowLeavesItsCodeAndNoMessage)
{
    LeaveMessage();
    command.Prepare("SELECT 7");
    const SqliteCallRecorder sqlite;

    const bool stepped = command.Step();

    EXPECT_TRUE(stepped);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(command, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(command.HasRowData());
}

TEST_F(SqlCommandStepTest, EndIsASuccessWithoutARowAndWithoutAMessage)
{
    LeaveMessage();
    command.Prepare("SELECT 7 WHERE 0");
    const SqliteCallRecorder sqlite;

    const bool stepped = command.Step();

    EXPECT_TRUE(stepped);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(command, HasError(SQLITE_DONE, ""));
    EXPECT_FALSE(command.HasRowData());
    EXPECT_EQ(command.ColumnCount(), 0);
}

TEST_F(SqlCommandStepTest, StepAfterTheEndStartsOver)
{
    command.Prepare("SELECT 7");
    command.Step();
    command.Step();

    const bool stepped = command.Step();

    EXPECT_TRUE(stepped);
    EXPECT_TRUE(command.HasRowData());
}

TEST_F(SqlCommandStepTest, WithoutAStatementReturnsFalseAndLeavesTheRecord)
{
    const std::string message = LeaveMessage();
    const SqliteCallRecorder sqlite;

    const bool stepped = command.Step();

    EXPECT_FALSE(stepped);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlCommandStepTest, FailureLeavesSqlitesCodeAndMessage)
{
    LeaveMessage();
    const RawFailure plain = PrepareFailingStep();
    const SqliteCallRecorder sqlite;

    const bool stepped = command.Step();

    EXPECT_FALSE(stepped);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_step()", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, plain.message));
    EXPECT_EQ(plain.code, SQLITE_CONSTRAINT);
    EXPECT_FALSE(command.HasRowData());
}

TEST_F(SqlCommandStepTest, AnyOtherResultCountsAsAFailureWithAMessage)
{
    command.Prepare("SELECT 7");
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_OK, false);

    const bool stepped = command.Step();

    EXPECT_FALSE(stepped);
    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(command, HasError(SQLITE_OK, sqlite3_errmsg(database.GetNativeDatabaseInstance<sqlite3>())));
}

TEST_F(SqlCommandStepTest, LockedDatabaseIsReportedAndTheStatementMayBeTriedAgain)
{
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    command.Prepare("INSERT INTO t VALUES (2)");

    EXPECT_FALSE(command.Step());
    EXPECT_THAT(command, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));

    other.Execute("COMMIT");
    EXPECT_FALSE(command.Reset());
    EXPECT_TRUE(command.Step());
    EXPECT_THAT(command, HasError(SQLITE_DONE, ""));
}

TEST_F(SqlCommandStepTest, StatementIsCompiledAgainAfterASchemaChange)
{
    command.Prepare("SELECT * FROM t");
    RawSqlite(path).Execute("ALTER TABLE t ADD COLUMN b");

    const bool stepped = command.Step();

    EXPECT_TRUE(stepped);
    EXPECT_EQ(command.ColumnCount(), 2);
}

TEST_F(SqlCommandStepTest, MessageOfAFailedStepIsThatOfTheCurrentConnection)
{
    PrepareFailingStep();
    const AbandonedConnection raw(database);

    const bool stepped = command.Step();

    EXPECT_FALSE(stepped);
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, sqlite3_errmsg(nullptr)));
    EXPECT_FALSE(command.Finalize());
}

TEST_F(SqlCommandStepTest, ResetRewindsAndKeepsTheBindings)
{
    command.Prepare("SELECT ? UNION ALL SELECT 8");
    command.BindInteger(1, 7);
    command.Step();
    command.Step();

    const bool reset = command.Reset();

    EXPECT_TRUE(reset);
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 7);
}

TEST_F(SqlCommandStepTest, ResetAfterAFailedStepReportsItAgainBesideItsMessage)
{
    const RawFailure plain = PrepareFailingStep();
    command.Step();

    const bool reset = command.Reset();

    EXPECT_FALSE(reset);
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, plain.message));
    EXPECT_TRUE(command.Reset());
    EXPECT_THAT(command, HasError(0, plain.message));
}

TEST_F(SqlCommandStepTest, FinalizeAfterAFailedStepReportsItAgainAndReleasesTheStatement)
{
    const RawFailure plain = PrepareFailingStep();
    command.Step();

    const bool finalized = command.Finalize();

    EXPECT_FALSE(finalized);
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, plain.message));
    EXPECT_TRUE(command.Prepare("SELECT 1"));
    EXPECT_THAT(command, HasError(0, plain.message));
}

TEST_F(SqlCommandStepTest, FinalizeReleasesTheStatement)
{
    command.Prepare("SELECT 1");
    command.Step();

    EXPECT_TRUE(command.Finalize());
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_FALSE(command.HasRowData());
    EXPECT_FALSE(command.Finalize());
    EXPECT_TRUE(database.Close());
}

} // namespace

} // namespace Morvik::sql::tests
