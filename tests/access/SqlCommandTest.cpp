#include <sql/SqlCommand.h>

#include <utility>

#include "support/AbandonedConnection.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

using SqlCommandTest = OpenConnection;

TEST_F(SqlCommandTest, StatementIsFinalizedOnAConnectionThatWasClosedMeanwhile)
{
    std::optional<SqlCommand> holding(std::in_place, database);
    holding->Prepare("SELECT 1");
    const AbandonedConnection raw(database);
    ASSERT_FALSE(database.IsOpen());

    holding.reset();

    EXPECT_EQ(raw.Statement(), nullptr);
}

TEST_F(SqlCommandTest, MovedFromCommandMayBeDestroyed)
{
    std::optional<SqlCommand> source(std::in_place, database);
    const SqlCommand target(std::move(*source));

    source.reset();

    EXPECT_THAT(target, HasError(0, ""));
}

using SqlCommandExecuteTest = OpenConnection;

TEST_F(SqlCommandExecuteTest, RunsEveryStatementWithOneCallWithoutACallback)
{
    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(command.Execute("CREATE TABLE t(a); INSERT INTO t VALUES (7)")); }),
                ElementsAre("sqlite3_exec(handle, CREATE TABLE t(a); INSERT INTO t VALUES (7), null, null)"));
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_EQ(RawSqlite(path).Value("SELECT a FROM t"), "7");
}

TEST_F(SqlCommandExecuteTest, RowsAreDiscardedAndTextWithoutAStatementSucceeds)
{
    for (const char* sql : {"SELECT 1 UNION SELECT 2", "", " \n", ";", "-- comment"}) {
        EXPECT_TRUE(command.Execute(sql)) << sql;
        EXPECT_THAT(command, HasError(0, "")) << sql;
        EXPECT_FALSE(command.HasRowData()) << sql;
    }
}

TEST_F(SqlCommandExecuteTest, TextEndsAtItsFirstZeroByte)
{
    EXPECT_TRUE(command.Execute("CREATE TABLE t(a)\0nonsense"s));
    EXPECT_EQ(RawSqlite(path).Value("SELECT name FROM sqlite_master"), "'t'");
}

TEST_F(SqlCommandExecuteTest, SyntaxErrorLeavesTheErrorTextUntilASuccess)
{
    const RawFailure raw = FailureOfExec(Handle(), "nonsense");
    ASSERT_NE(raw.message, "");

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Execute("nonsense")); }),
                ElementsAre("sqlite3_exec(handle, nonsense, null, null)", "sqlite3_free(memory)"));
    EXPECT_THAT(command, HasError(SQLITE_ERROR, raw.message));
    EXPECT_THAT(database, HasError(0, ""));

    EXPECT_TRUE(command.Execute("SELECT 1"));
    EXPECT_THAT(command, HasError(0, ""));
}

TEST_F(SqlCommandExecuteTest, FailureWithoutATextEmptiesTheEarlierMessage)
{
    LeaveMessage(command);
    const ReplacedResult replaced("sqlite3_exec", SQLITE_NOMEM);

    EXPECT_FALSE(command.Execute("SELECT 1"));

    EXPECT_THAT(command, HasError(SQLITE_NOMEM, ""));
}

TEST_F(SqlCommandExecuteTest, StatementsBeforeAFailingOneStayDone)
{
    EXPECT_FALSE(command.Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (7); "
                                 "INSERT INTO t VALUES (7); INSERT INTO t VALUES (8)"));

    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, FailureOfExec(Handle(), "INSERT INTO t VALUES (7)").message));
    EXPECT_THAT(RawSqlite(path).Rows("SELECT a FROM t"), ElementsAre(ElementsAre("7")));
}

TEST_F(SqlCommandExecuteTest, PreparedStatementIsNotTouched)
{
    StepTo("SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3");

    EXPECT_EQ(CallsDuring([&] { EXPECT_TRUE(command.Execute("SELECT 1")); }).size(), 1U);
    EXPECT_EQ(NextInteger(command), 2);
}

} // namespace

} // namespace Morvik::sql::tests
