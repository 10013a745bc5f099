#include <sql/SqlCommand.h>

#include "support/AbandonedConnection.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SqlCommandStepTest : public ConnectedCommand {
protected:
    SqlCommandStepTest() { command.Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (1)"); }

    // Prepares a statement whose step fails. Returns the message of the same statement in raw SQLite.
    std::string PrepareFailingStep()
    {
        static constexpr char Sql[] = "INSERT INTO t VALUES (1)";
        EXPECT_TRUE(command.Prepare(Sql));
        const RawFailure raw = FailureOfExec(RawSqlite(path).Handle(), Sql);
        EXPECT_EQ(raw.code, SQLITE_CONSTRAINT);
        return raw.message;
    }
};

TEST_F(SqlCommandStepTest, RowLeavesItsCodeAndNoMessage)
{
    LeaveMessage();
    command.Prepare("SELECT 7");

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(command.Step()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(command, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(command.HasRowData());
}

TEST_F(SqlCommandStepTest, EndIsASuccessWithoutRowOrMessage)
{
    LeaveMessage();
    command.Prepare("SELECT 7 WHERE 0");

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(command.Step()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(command, HasError(SQLITE_DONE, ""));
    EXPECT_FALSE(command.HasRowData());
    EXPECT_EQ(command.ColumnCount(), 0);
}

TEST_F(SqlCommandStepTest, WithoutAStatementReturnsFalseAndLeavesTheRecord)
{
    const std::string message = LeaveMessage();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Step()); }), IsEmpty());
    EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlCommandStepTest, FailureLeavesSqlitesCodeAndMessage)
{
    LeaveMessage();
    const std::string message = PrepareFailingStep();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Step()); }),
                ElementsAre("sqlite3_step()", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, message));
    EXPECT_FALSE(command.HasRowData());
}

TEST_F(SqlCommandStepTest, AnyOtherResultCountsAsAFailureWithAMessage)
{
    command.Prepare("SELECT 7");
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_OK, false);

    EXPECT_FALSE(command.Step());

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(command, HasError(SQLITE_OK, sqlite3_errmsg(Handle())));
}

TEST_F(SqlCommandStepTest, StatementMayBeTriedAgainAfterALock)
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

    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnCount(), 2);
}

TEST_F(SqlCommandStepTest, FailedStepReadsTheMessageFromTheCurrentConnection)
{
    PrepareFailingStep();
    const AbandonedConnection raw(database);

    EXPECT_FALSE(command.Step());
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, sqlite3_errmsg(nullptr)));
    EXPECT_FALSE(command.Finalize());
}

TEST_F(SqlCommandStepTest, ResetRewindsAndKeepsTheBindings)
{
    command.Prepare("SELECT ? UNION ALL SELECT 8");
    command.BindInteger(1, 7);
    command.Step();
    command.Step();

    EXPECT_TRUE(command.Reset());
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_EQ(NextInteger(command), 7);
}

TEST_F(SqlCommandStepTest, ResetAfterAFailedStepRepeatsItsCode)
{
    const std::string message = PrepareFailingStep();
    command.Step();

    EXPECT_FALSE(command.Reset());
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, message));
    EXPECT_TRUE(command.Reset());
    EXPECT_THAT(command, HasError(0, message));
}

TEST_F(SqlCommandStepTest, FinalizeAfterAFailedStepRepeatsItsCode)
{
    const std::string message = PrepareFailingStep();
    command.Step();

    EXPECT_FALSE(command.Finalize());
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, message));
    EXPECT_TRUE(command.Prepare("SELECT 1"));
    EXPECT_THAT(command, HasError(0, message));
}

TEST_F(SqlCommandStepTest, FinalizeReleasesTheStatement)
{
    StepTo("SELECT 1");

    EXPECT_TRUE(command.Finalize());
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_FALSE(command.HasRowData());
    EXPECT_FALSE(command.Finalize());
    EXPECT_TRUE(database.Close());
}

} // namespace

} // namespace Morvik::sql::tests
