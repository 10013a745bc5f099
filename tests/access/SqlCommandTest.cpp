#include <sql/SqlCommand.h>

#include <type_traits>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<SqlCommand> && !std::is_copy_assignable_v<SqlCommand>);
static_assert(std::is_nothrow_move_constructible_v<SqlCommand> && std::is_nothrow_move_assignable_v<SqlCommand>);
static_assert(std::is_constructible_v<SqlCommand, SqlDatabase&> && !std::is_convertible_v<SqlDatabase&, SqlCommand>);
static_assert(!std::is_constructible_v<SqlCommand, SqlDatabase>, "a temporary connection would not outlive it");
static_assert(!std::is_polymorphic_v<SqlCommand> && sizeof(SqlCommand) == sizeof(void*));

class SqlCommandTest : public OpenConnection {};

TEST_F(SqlCommandTest, StartsWithoutAnErrorAndWithoutAStatement)
{
    const SqliteCallRecorder sqlite;
    {
        const SqlCommand command(database);

        EXPECT_THAT(command, HasError(0, ""));
        EXPECT_FALSE(command.HasRowData());
        EXPECT_EQ(command.ColumnCount(), 0);
    }
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlCommandTest, CommandMadeBeforeTheConnectionOpensWorksAfterwards)
{
    SqlDatabase late;
    SqlCommand command(late);
    ASSERT_FALSE(command.Execute("SELECT 1"));
    late.Open(path, false);

    EXPECT_TRUE(command.Execute("CREATE TABLE t(a)"));
    EXPECT_TRUE(command.Prepare("SELECT 7"));
    EXPECT_EQ(NextInteger(command), 7);
}

TEST_F(SqlCommandTest, DestructorFinalizesTheStatement)
{
    std::optional<SqlCommand> command(std::in_place, database);
    command->Prepare("SELECT 1");

    EXPECT_THAT(CallsDuring([&] { command.reset(); }), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_TRUE(database.Close());
}

TEST_F(SqlCommandTest, StatementIsFinalizedOnAConnectionThatWasClosedMeanwhile)
{
    std::optional<SqlCommand> command(std::in_place, database);
    command->Prepare("SELECT 1");
    const AbandonedConnection raw(database);
    ASSERT_FALSE(database.IsOpen());

    command.reset();

    EXPECT_EQ(raw.Statement(), nullptr);
}

TEST_F(SqlCommandTest, MoveTakesTheStatementAndTheErrorOver)
{
    std::optional<SqlCommand> source(std::in_place, database);
    source->Execute("nonsense");
    const std::string message = source->GetLastErrorMsg();
    source->Prepare("SELECT 7");
    const SqliteCallRecorder sqlite;

    SqlCommand target(std::move(*source));
    source.reset();

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(target, HasError(0, message));
    EXPECT_EQ(NextInteger(target), 7);
}

TEST_F(SqlCommandTest, MovedFromCommandMayBeAssignedTo)
{
    SqlCommand source(database);
    const SqlCommand target(std::move(source));
    SqlCommand other(database);
    other.Prepare("SELECT 7");

    source = std::move(other);

    EXPECT_EQ(NextInteger(source), 7);
}

TEST_F(SqlCommandTest, MoveAssignmentFinalizesTheStatementAndTakesTheConnectionOver)
{
    SqlDatabase other;
    other.Open(":memory:", false);
    SqlCommand source(other);
    source.Prepare("SELECT 7");
    SqlCommand target(database);
    target.Execute("nonsense");
    target.Prepare("SELECT 8");

    EXPECT_THAT(CallsDuring([&] { EXPECT_EQ(&(target = std::move(source)), &target); }),
                ElementsAre("sqlite3_finalize(statement)"));

    EXPECT_THAT(target, HasError(0, ""));
    EXPECT_EQ(NextInteger(target), 7);
    EXPECT_TRUE(target.Execute("CREATE TABLE t(a)"));
    EXPECT_EQ(RawSqlite(path).Value("SELECT count(*) FROM sqlite_master"), "0");
}

class SqlCommandExecuteTest : public ConnectedCommand {};

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
    LeaveMessage();
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_exec", SQLITE_NOMEM, false);

    EXPECT_FALSE(command.Execute("SELECT 1"));

    EXPECT_FALSE(sqlite.Pending());
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
