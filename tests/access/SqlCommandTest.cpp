#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<SqlCommand> && !std::is_copy_assignable_v<SqlCommand>);
static_assert(std::is_nothrow_move_constructible_v<SqlCommand> && std::is_nothrow_move_assignable_v<SqlCommand>);
static_assert(std::is_constructible_v<SqlCommand, SqlDatabase&> && !std::is_convertible_v<SqlDatabase&, SqlCommand>);
static_assert(!std::is_constructible_v<SqlCommand, SqlDatabase>, "a temporary connection would not outlive it");
static_assert(!std::is_polymorphic_v<SqlCommand> && sizeof(SqlCommand) == sizeof(void*));

class SqlCommandTest : public WithOpenDatabase {};

TEST_F(SqlCommandTest, FreshCommandHasAnEmptyRecordAndNoStatement)
{
    const SqliteCallRecorder sqlite;
    const SqlCommand command(database);

    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_FALSE(command.HasRowData());
    EXPECT_EQ(command.ColumnCount(), 0);
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
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 7);
}

TEST_F(SqlCommandTest, DestructorFinalizesTheStatement)
{
    auto command = std::make_unique<SqlCommand>(database);
    command->Prepare("SELECT 1");

    {
        const SqliteCallRecorder sqlite;
        command.reset();
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    }

    EXPECT_TRUE(database.Close());
}

TEST_F(SqlCommandTest, DestructorWithoutAStatementCallsNothing)
{
    auto command = std::make_unique<SqlCommand>(database);
    const SqliteCallRecorder sqlite;

    command.reset();

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlCommandTest, MoveTakesTheStatementAndTheRecordOver)
{
    SqlCommand source(database);
    source.Execute("nonsense");
    const std::string message = source.GetLastErrorMsg();
    source.Prepare("SELECT 7");
    const SqliteCallRecorder sqlite;

    SqlCommand target(std::move(source));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(target, HasError(0, message));
    EXPECT_TRUE(target.Step());
    EXPECT_EQ(target.ColumnInt(0), 7);
}

TEST_F(SqlCommandTest, MovedFromCommandMayBeDestroyed)
{
    auto source = std::make_unique<SqlCommand>(database);
    source->Prepare("SELECT 7");
    SqlCommand target(std::move(*source));
    const SqliteCallRecorder sqlite;

    source.reset();

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_TRUE(target.Step());
}

TEST_F(SqlCommandTest, MovedFromCommandMayBeAssignedTo)
{
    SqlCommand source(database);
    const SqlCommand target(std::move(source));
    SqlCommand other(database);
    other.Prepare("SELECT 7");

    source = std::move(other);

    EXPECT_TRUE(source.Step());
    EXPECT_EQ(source.ColumnInt(0), 7);
}

TEST_F(SqlCommandTest, MoveAssignmentFinalizesThePreviousStatement)
{
    SqlCommand source(database);
    source.Prepare("SELECT 7");
    SqlCommand target(database);
    target.Execute("nonsense");
    target.Prepare("SELECT 8");

    {
        const SqliteCallRecorder sqlite;
        SqlCommand& result = target = std::move(source);
        EXPECT_EQ(&result, &target);
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    }

    EXPECT_THAT(target, HasError(0, ""));
    EXPECT_TRUE(target.Step());
    EXPECT_EQ(target.ColumnInt(0), 7);
}

TEST_F(SqlCommandTest, MoveAssignmentTakesTheConnectionOver)
{
    SqlDatabase other;
    other.Open(":memory:", false);
    SqlCommand source(other);
    SqlCommand target(database);

    target = std::move(source);

    EXPECT_TRUE(target.Execute("CREATE TABLE t(a)"));
    EXPECT_EQ(RawSqlite(path).Value("SELECT count(*) FROM sqlite_master"), "0");
}

TEST_F(SqlCommandTest, StatementIsFinalizedOnAConnectionThatWasClosedMeanwhile)
{
    auto command = std::make_unique<SqlCommand>(database);
    command->Prepare("SELECT 1");
    const AbandonedConnection raw(database);
    ASSERT_FALSE(database.IsOpen());

    command.reset();

    EXPECT_EQ(raw.Statement(), nullptr);
}

} // namespace

} // namespace Morvik::sql::tests
