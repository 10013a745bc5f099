#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>

#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;

class SqlCommandExecuteTest : public WithOpenDatabase {
protected:
    SqlCommand command{database};
};

TEST_F(SqlCommandExecuteTest, RunsTheTextWithoutACallback)
{
    const SqliteCallRecorder sqlite;

    const bool executed = command.Execute("CREATE TABLE t(a)");

    EXPECT_TRUE(executed);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(handle, CREATE TABLE t(a), null, null)"));
    EXPECT_THAT(command, HasError(0, ""));
}

TEST_F(SqlCommandExecuteTest, RunsEveryStatementInTurn)
{
    const bool executed = command.Execute("CREATE TABLE t(a); INSERT INTO t VALUES (7)");

    EXPECT_TRUE(executed);
    EXPECT_EQ(RawSqlite(path).Value("SELECT a FROM t"), "7");
}

TEST_F(SqlCommandExecuteTest, DiscardsResultRowsAndLeavesCodeZero)
{
    const bool executed = command.Execute("SELECT 1 UNION SELECT 2");

    EXPECT_TRUE(executed);
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_FALSE(command.HasRowData());
}

TEST_F(SqlCommandExecuteTest, TextWithoutAStatementSucceeds)
{
    for (const char* sql : {"", " \n", ";", "-- comment"}) {
        EXPECT_TRUE(command.Execute(sql)) << sql;
        EXPECT_THAT(command, HasError(0, "")) << sql;
    }
}

TEST_F(SqlCommandExecuteTest, TextEndsAtItsFirstZeroByte)
{
    const bool executed = command.Execute("CREATE TABLE t(a)\0nonsense"s);

    EXPECT_TRUE(executed);
    EXPECT_EQ(RawSqlite(path).Value("SELECT name FROM sqlite_master"), "'t'");
}

TEST_F(SqlCommandExecuteTest, SyntaxErrorLeavesTheErrorTextAndFreesSqlitesCopy)
{
    const RawFailure plain = FailureOfExec(database.GetNativeDatabaseInstance<sqlite3>(), "nonsense");
    const SqliteCallRecorder sqlite;

    const bool executed = command.Execute("nonsense");

    EXPECT_FALSE(executed);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(handle, nonsense, null, null)", "sqlite3_free(memory)"));
    EXPECT_THAT(command, HasError(SQLITE_ERROR, plain.message));
    EXPECT_NE(plain.message, "");
}

TEST_F(SqlCommandExecuteTest, SuccessAfterAFailureEmptiesTheMessage)
{
    command.Execute("nonsense");
    ASSERT_NE(command.GetLastErrorMsg(), "");

    const bool executed = command.Execute("SELECT 1");

    EXPECT_TRUE(executed);
    EXPECT_THAT(command, HasError(0, ""));
}

TEST_F(SqlCommandExecuteTest, FailureWithoutATextEmptiesTheEarlierMessage)
{
    command.Execute("nonsense");
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_exec", SQLITE_NOMEM, false);

    const bool executed = command.Execute("SELECT 1");

    EXPECT_FALSE(executed);
    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(command, HasError(SQLITE_NOMEM, ""));
}

TEST_F(SqlCommandExecuteTest, ClosedConnectionIsHandedToSqliteAndRefusedByIt)
{
    SqlDatabase closed;
    SqlCommand onClosed(closed);
    const SqliteCallRecorder sqlite;

    const bool executed = onClosed.Execute("SELECT 1");

    EXPECT_FALSE(executed);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(null, SELECT 1, null, null)"));
    EXPECT_THAT(onClosed, HasError(SQLITE_MISUSE, ""));
}

TEST_F(SqlCommandExecuteTest, StatementsBeforeAFailingOneStayDone)
{
    const bool executed = command.Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (7); "
                                          "INSERT INTO t VALUES (7); INSERT INTO t VALUES (8)");

    EXPECT_FALSE(executed);
    EXPECT_THAT(
        command,
        HasError(SQLITE_CONSTRAINT,
                 FailureOfExec(database.GetNativeDatabaseInstance<sqlite3>(), "INSERT INTO t VALUES (7)").message));
    EXPECT_THAT(RawSqlite(path).Rows("SELECT a FROM t"), ElementsAre(ElementsAre("7")));
}

TEST_F(SqlCommandExecuteTest, FailureDoesNotTouchTheConnectionsRecord)
{
    command.Execute("nonsense");

    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(SqlCommandExecuteTest, PreparedStatementIsNotTouched)
{
    command.Prepare("SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3");
    ASSERT_TRUE(command.Step());
    const SqliteCallRecorder sqlite;

    const bool executed = command.Execute("SELECT 1");

    EXPECT_TRUE(executed);
    EXPECT_EQ(sqlite.Calls().size(), 1U);
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 2);
}

} // namespace

} // namespace Morvik::sql::tests
