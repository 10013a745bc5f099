#include <sql/SqlDatabase.h>

#include <csignal>
#include <filesystem>
#include <type_traits>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/NoDestructor.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<SqlDatabase> && !std::is_copy_assignable_v<SqlDatabase>);
static_assert(std::is_nothrow_move_constructible_v<SqlDatabase> && std::is_nothrow_move_assignable_v<SqlDatabase>);

template <typename Native>
concept NativeInstance = requires(SqlDatabase& database)
{
    database.GetNativeDatabaseInstance<Native>();
};

static_assert(NativeInstance<sqlite3>);
static_assert(!NativeInstance<sqlite3_stmt> && !NativeInstance<void> && !NativeInstance<const sqlite3>);

using SqlDatabaseTest = OpenConnection;

TEST_F(SqlDatabaseTest, StartsClosedAndIsDestroyedWithoutACall)
{
    const SqliteCallRecorder sqlite;
    {
        SqlDatabase closed;

        EXPECT_THAT(closed, HasError(0, ""));
        EXPECT_FALSE(closed.IsOpen());
        EXPECT_EQ(closed.GetNativeDatabaseInstance<sqlite3>(), nullptr);
    }
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlDatabaseTest, SecondOpenLeavesTheConnectionAndTheErrorUnchanged)
{
    sqlite3* const handle = Handle();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(database.Open(directory.File("missing/other.db"), false)); }),
                IsEmpty());
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_EQ(Handle(), handle);
    EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
}

TEST_F(SqlDatabaseTest, CloseReleasesTheHandleOnce)
{
    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(database.Close()); }), ElementsAre("sqlite3_close(handle)"));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_FALSE(database.IsOpen());
    EXPECT_EQ(Handle(), nullptr);

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(database.Close()); }), IsEmpty());
    EXPECT_TRUE(database.Open(path, true));
    EXPECT_TRUE(SqlCommand(database).Execute("SELECT 1"));
}

TEST_F(SqlDatabaseTest, CloseFailsWhileAStatementIsHeld)
{
    sqlite3* const handle = Handle();
    command.Prepare("SELECT 1");

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(database.Close()); }),
                ElementsAre("sqlite3_close(handle)", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(database, HasError(SQLITE_BUSY, FailureOfCloseWithAStatement().message));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_EQ(Handle(), handle);

    command.Finalize();
    EXPECT_TRUE(database.Close());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(SqlDatabaseTest, DestructorClosesOnce)
{
    std::optional<SqlDatabase> other(std::in_place);
    other->Open(path, false);

    EXPECT_THAT(CallsDuring([&] { other.reset(); }), ElementsAre("sqlite3_close(handle)"));
}

TEST_F(SqlDatabaseTest, DestructorAbandonsAConnectionWithAHeldStatement)
{
    std::optional<SqlDatabase> other(std::in_place);
    other->Open(path, false);
    const AbandonedConnection raw(other->GetNativeDatabaseInstance<sqlite3>());
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(raw.Handle(), "SELECT 7", -1, &statement, nullptr), SQLITE_OK);

    EXPECT_THAT(CallsDuring([&] { other.reset(); }), ElementsAre("sqlite3_close(handle)", "sqlite3_errmsg(handle)"));

    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(statement, 0), 7);
}

TEST_F(SqlDatabaseTest, MoveTakesTheHandleAndTheErrorOver)
{
    NoDestructor<SqlDatabase> source;
    source->Open(path, false);
    sqlite3* const handle = source->GetNativeDatabaseInstance<sqlite3>();
    SqlCommand holding(*source);
    holding.Prepare("SELECT 1");
    ASSERT_FALSE(source->Close());
    holding.Finalize();
    const std::string message = source->GetLastErrorMsg();
    const SqliteCallRecorder sqlite;

    SqlDatabase target(std::move(*source));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(target, HasError(SQLITE_BUSY, message));
    EXPECT_TRUE(target.IsOpen());
    EXPECT_EQ(target.GetNativeDatabaseInstance<sqlite3>(), handle);
}

TEST_F(SqlDatabaseTest, MovedFromConnectionMayBeAssignedTo)
{
    SqlDatabase source;
    SqlDatabase target(std::move(source));
    NoDestructor<SqlDatabase> opened;
    opened->Open(path, false);

    source = std::move(*opened);

    EXPECT_TRUE(source.IsOpen());
    EXPECT_FALSE(target.IsOpen());
}

TEST_F(SqlDatabaseTest, MoveAssignmentDropsTheOldConnectionWithoutClosingIt)
{
    const AbandonedConnection raw(Handle());
    NoDestructor<SqlDatabase> source;
    ASSERT_FALSE(source->Open(directory.File("missing.db"), true));
    const std::string message = source->GetLastErrorMsg();

    EXPECT_THAT(CallsDuring([&] { EXPECT_EQ(&(database = std::move(*source)), &database); }), IsEmpty());

    EXPECT_FALSE(database.IsOpen());
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, message));
    EXPECT_EQ(FailureOfExec(raw.Handle(), "CREATE TABLE t(a)").code, SQLITE_OK);
}

using SqlDatabaseDeathTest = SqlDatabaseTest;

// SQLite's message is replaced with null. Storing null throws an exception, as running out of memory would.
TEST_F(SqlDatabaseDeathTest, ExceptionWhileTheDestructorStoresTheMessageEndsTheProcess)
{
    EXPECT_EXIT(
        {
            std::optional<SqlDatabase> other(std::in_place);
            other->Open(path, false);
            SqlCommand holding(*other);
            holding.Prepare("SELECT 1");
            const ReplacedResult replaced("sqlite3_errmsg");
            other.reset();
        },
        testing::KilledBySignal(SIGABRT), "");
}

} // namespace

} // namespace Morvik::sql::tests
