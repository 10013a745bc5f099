#include <sql/SqlDatabase.h>

#include <sql/SqlCommand.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
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

static_assert(!std::is_polymorphic_v<SqlDatabase> && sizeof(SqlDatabase) == sizeof(void*));

template <typename Native>
concept NativeInstance = requires(SqlDatabase& database)
{
    database.GetNativeDatabaseInstance<Native>();
};

static_assert(NativeInstance<sqlite3>);
static_assert(!NativeInstance<sqlite3_stmt> && !NativeInstance<void> && !NativeInstance<const sqlite3>);

class SqlDatabaseTest : public WithOpenDatabase {};

TEST_F(SqlDatabaseTest, FreshConnectionIsClosedWithoutAnError)
{
    SqlDatabase fresh;

    EXPECT_THAT(fresh, HasError(0, ""));
    EXPECT_FALSE(fresh.IsOpen());
    EXPECT_EQ(fresh.GetNativeDatabaseInstance<sqlite3>(), nullptr);
}

TEST_F(SqlDatabaseTest, OpenConnectionHandsOutItsHandle)
{
    sqlite3* const handle = database.GetNativeDatabaseInstance<sqlite3>();

    EXPECT_TRUE(database.IsOpen());
    EXPECT_THAT(database, HasError(0, ""));
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(sqlite3_exec(handle, "CREATE TABLE t(a)", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(RawSqlite(path).Value("SELECT name FROM sqlite_master"), "'t'");
}

TEST_F(SqlDatabaseTest, SecondOpenLeavesTheConnectionAndTheRecordAlone)
{
    sqlite3* const handle = database.GetNativeDatabaseInstance<sqlite3>();
    const SqliteCallRecorder sqlite;

    const bool opened = database.Open(directory.File("missing/other.db"), false);

    EXPECT_FALSE(opened);
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_EQ(database.GetNativeDatabaseInstance<sqlite3>(), handle);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
}

TEST_F(SqlDatabaseTest, SecondOpenKeepsAnEarlierFailureInTheRecord)
{
    SqlCommand command(database);
    command.Prepare("SELECT 1");
    ASSERT_FALSE(database.Close());
    const std::string message = database.GetLastErrorMsg();

    const bool opened = database.Open(path, false);

    EXPECT_FALSE(opened);
    EXPECT_THAT(database, HasError(SQLITE_BUSY, message));
    EXPECT_TRUE(database.IsOpen());
}

TEST_F(SqlDatabaseTest, CloseReleasesTheHandle)
{
    const SqliteCallRecorder sqlite;

    const bool closed = database.Close();

    EXPECT_TRUE(closed);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)"));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_FALSE(database.IsOpen());
    EXPECT_EQ(database.GetNativeDatabaseInstance<sqlite3>(), nullptr);
}

TEST_F(SqlDatabaseTest, SecondCloseSucceedsWithoutACall)
{
    database.Close();
    const SqliteCallRecorder sqlite;

    const bool closed = database.Close();

    EXPECT_TRUE(closed);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(SqlDatabaseTest, CloseWhileClosedKeepsAnEarlierFailureInTheRecord)
{
    SqlDatabase closed;
    closed.Open(directory.File("missing.db"), true);
    const std::string message = closed.GetLastErrorMsg();
    ASSERT_NE(message, "");

    const bool succeeded = closed.Close();

    EXPECT_TRUE(succeeded);
    EXPECT_THAT(closed, HasError(SQLITE_CANTOPEN, message));
}

TEST_F(SqlDatabaseTest, CloseIsRefusedWhileAStatementIsHeld)
{
    sqlite3* const handle = database.GetNativeDatabaseInstance<sqlite3>();
    SqlCommand command(database);
    command.Prepare("SELECT 1");

    {
        const SqliteCallRecorder sqlite;
        EXPECT_FALSE(database.Close());
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)", "sqlite3_errmsg(handle)"));
    }
    EXPECT_THAT(database, HasError(SQLITE_BUSY, FailureOfCloseWithAStatement().message));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_EQ(database.GetNativeDatabaseInstance<sqlite3>(), handle);

    command.Finalize();
    EXPECT_TRUE(database.Close());
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_FALSE(database.IsOpen());
}

TEST_F(SqlDatabaseTest, ReopensAfterAClose)
{
    SqlCommand(database).Execute("CREATE TABLE t(a); INSERT INTO t VALUES (7)");
    database.Close();

    const bool opened = database.Open(path, true);

    EXPECT_TRUE(opened);
    EXPECT_EQ(RawSqlite(path).Value("SELECT a FROM t"), "7");
}

TEST_F(SqlDatabaseTest, DestructorClosesOnce)
{
    auto other = std::make_unique<SqlDatabase>();
    other->Open(path, false);
    const SqliteCallRecorder sqlite;

    other.reset();

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)"));
}

TEST_F(SqlDatabaseTest, DestructorOfAClosedConnectionCallsNothing)
{
    auto other = std::make_unique<SqlDatabase>();
    const SqliteCallRecorder sqlite;

    other.reset();

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlDatabaseTest, DestructorAbandonsAConnectionWithAHeldStatement)
{
    auto other = std::make_unique<SqlDatabase>();
    other->Open(path, false);
    const AbandonedConnection raw(other->GetNativeDatabaseInstance<sqlite3>());
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(raw.Handle(), "SELECT 7", -1, &statement, nullptr), SQLITE_OK);

    {
        const SqliteCallRecorder sqlite;
        other.reset();
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)", "sqlite3_errmsg(handle)"));
    }

    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(statement, 0), 7);
}

using SqlDatabaseDeathTest = SqlDatabaseTest;

// A null message cannot become a string. That exception represents any exception thrown while the message is stored.
TEST_F(SqlDatabaseDeathTest, ExceptionWhileTheDestructorStoresTheMessageEndsTheProcess)
{
    EXPECT_EXIT(
        {
            std::optional<SqlDatabase> other(std::in_place);
            other->Open(path, false);
            SqlCommand command(*other);
            command.Prepare("SELECT 1");
            SqliteCallRecorder sqlite;
            sqlite.ReplaceNextResult("sqlite3_errmsg", 0, false);
            other.reset();
        },
        testing::KilledBySignal(SIGABRT), "");
}

} // namespace

} // namespace Morvik::sql::tests
