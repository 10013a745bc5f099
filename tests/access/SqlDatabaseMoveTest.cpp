#include <sql/SqlDatabase.h>

#include <sql/SqlCommand.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>
#include <type_traits>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/HasError.h"
#include "support/NoDestructor.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<SqlDatabase> && !std::is_copy_assignable_v<SqlDatabase>);
static_assert(std::is_nothrow_move_constructible_v<SqlDatabase> && std::is_nothrow_move_assignable_v<SqlDatabase>);

class SqlDatabaseMoveTest : public WithOpenDatabase {};

TEST_F(SqlDatabaseMoveTest, MoveTakesTheConnectionAndTheRecordOver)
{
    NoDestructor<SqlDatabase> source;
    source->Open(directory.File("missing.db"), true);
    const std::string message = source->GetLastErrorMsg();
    const SqliteCallRecorder sqlite;

    const SqlDatabase failed(std::move(*source));

    EXPECT_THAT(failed, HasError(SQLITE_CANTOPEN, message));
    EXPECT_FALSE(failed.IsOpen());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlDatabaseMoveTest, MoveKeepsTheHandleOpen)
{
    NoDestructor<SqlDatabase> source;
    source->Open(path, false);
    sqlite3* const handle = source->GetNativeDatabaseInstance<sqlite3>();

    SqlDatabase target(std::move(*source));

    EXPECT_TRUE(target.IsOpen());
    EXPECT_EQ(target.GetNativeDatabaseInstance<sqlite3>(), handle);
    EXPECT_TRUE(SqlCommand(target).Execute("SELECT 1"));
}

TEST_F(SqlDatabaseMoveTest, MovedFromConnectionMayBeAssignedTo)
{
    SqlDatabase source;
    SqlDatabase target(std::move(source));
    NoDestructor<SqlDatabase> opened;
    opened->Open(path, false);

    source = std::move(*opened);

    EXPECT_TRUE(source.IsOpen());
    EXPECT_FALSE(target.IsOpen());
}

TEST_F(SqlDatabaseMoveTest, MoveAssignmentDropsTheOldConnectionWithoutClosingIt)
{
    const AbandonedConnection raw(database.GetNativeDatabaseInstance<sqlite3>());
    NoDestructor<SqlDatabase> source;
    source->Open(":memory:", false);
    sqlite3* const handle = source->GetNativeDatabaseInstance<sqlite3>();

    {
        const SqliteCallRecorder sqlite;
        database = std::move(*source);
        EXPECT_THAT(sqlite.Calls(), IsEmpty());
    }

    EXPECT_EQ(database.GetNativeDatabaseInstance<sqlite3>(), handle);
    EXPECT_EQ(sqlite3_exec(raw.Handle(), "CREATE TABLE t(a)", nullptr, nullptr, nullptr), SQLITE_OK);
}

TEST_F(SqlDatabaseMoveTest, MoveAssignmentReplacesTheRecord)
{
    SqlDatabase target;
    target.Open(directory.File("missing.db"), true);
    ASSERT_NE(target.GetLastError(), 0);
    NoDestructor<SqlDatabase> source;

    SqlDatabase& result = target = std::move(*source);

    EXPECT_EQ(&result, &target);
    EXPECT_THAT(target, HasError(0, ""));
}

} // namespace

} // namespace Morvik::sql::tests
