#include <sql/SqlTable.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "support/HasError.h"
#include "support/NoDestructor.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<SqlTable> && !std::is_copy_assignable_v<SqlTable>);
static_assert(std::is_nothrow_move_constructible_v<SqlTable> && std::is_nothrow_move_assignable_v<SqlTable>);
static_assert(std::is_constructible_v<SqlTable, SqlDatabase&> && !std::is_convertible_v<SqlDatabase&, SqlTable>);
static_assert(!std::is_constructible_v<SqlTable, SqlDatabase>, "a temporary connection would not outlive it");
static_assert(!std::is_polymorphic_v<SqlTable> && sizeof(SqlTable) == sizeof(void*));

class SqlTableTest : public WithOpenDatabase {};

TEST_F(SqlTableTest, FreshCursorIsClosedWithoutAnError)
{
    const SqliteCallRecorder sqlite;
    const SqlTable table(database);

    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_FALSE(table.IsOpen());
    EXPECT_EQ(table.Columns(), 0);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlTableTest, ConstantCursorIsWalked)
{
    const SqlTable table(database);

    EXPECT_TRUE(table.Open("SELECT 7 UNION ALL SELECT 8"));
    EXPECT_TRUE(table.ReadNext());
    EXPECT_EQ(table.GetInteger(0), 7);
    EXPECT_TRUE(table.ReadNext());
    EXPECT_EQ(table.GetInteger(0), 8);
    EXPECT_FALSE(table.ReadNext());
    EXPECT_TRUE(table.Reset());
    EXPECT_TRUE(table.Close());
}

TEST_F(SqlTableTest, CursorMadeBeforeTheConnectionOpensWorksAfterwards)
{
    SqlDatabase late;
    const SqlTable table(late);
    ASSERT_FALSE(table.Open("SELECT 7"));
    late.Open(path, false);

    EXPECT_TRUE(table.Open("SELECT 7"));
    EXPECT_TRUE(table.ReadNext());
    EXPECT_EQ(table.GetInteger(0), 7);
}

TEST_F(SqlTableTest, OpenCursorKeepsItsConnectionFromClosing)
{
    const SqlTable table(database);
    table.Open("SELECT 7");

    EXPECT_FALSE(database.Close());
    EXPECT_EQ(database.GetLastError(), SQLITE_BUSY);

    table.Close();
    EXPECT_TRUE(database.Close());
}

TEST_F(SqlTableTest, DestructorFinalizesTheQueryOnce)
{
    auto table = std::make_unique<SqlTable>(database);
    table->Open("SELECT 7");

    {
        const SqliteCallRecorder sqlite;
        table.reset();
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    }

    EXPECT_TRUE(database.Close());
}

TEST_F(SqlTableTest, DestructorOfAClosedCursorCallsNothing)
{
    auto table = std::make_unique<SqlTable>(database);
    const SqliteCallRecorder sqlite;

    table.reset();

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlTableTest, MoveTakesTheQueryAndTheRecordOver)
{
    NoDestructor<SqlTable> source(database);
    source->Open("SELECT 7 UNION ALL SELECT 8");
    source->ReadNext();
    const SqliteCallRecorder sqlite;

    const SqlTable target(std::move(*source));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(target, HasError(SQLITE_ROW, ""));
    EXPECT_EQ(target.GetInteger(0), 7);
    EXPECT_TRUE(target.ReadNext());
    EXPECT_EQ(target.GetInteger(0), 8);
}

TEST_F(SqlTableTest, MovedFromCursorMayBeAssignedTo)
{
    SqlTable source(database);
    const SqlTable target(std::move(source));
    NoDestructor<SqlTable> other(database);
    other->Open("SELECT 7");

    source = std::move(*other);

    EXPECT_TRUE(source.IsOpen());
    EXPECT_FALSE(target.IsOpen());
}

TEST_F(SqlTableTest, MoveAssignmentFinalizesThePreviousQuery)
{
    NoDestructor<SqlTable> source(database);
    source->Open("nonsense");
    const std::string message = source->GetLastErrorMsg();
    SqlTable target(database);
    target.Open("SELECT 8");

    {
        const SqliteCallRecorder sqlite;
        SqlTable& result = target = std::move(*source);
        EXPECT_EQ(&result, &target);
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    }

    EXPECT_FALSE(target.IsOpen());
    EXPECT_THAT(target, HasError(SQLITE_ERROR, message));
    EXPECT_TRUE(database.Close());
}

TEST_F(SqlTableTest, MoveAssignmentTakesTheConnectionOver)
{
    SqlDatabase other;
    other.Open(":memory:", false);
    RawSqlite(path).Execute("CREATE TABLE t(a)");
    NoDestructor<SqlTable> source(database);
    SqlTable target(other);

    target = std::move(*source);

    EXPECT_TRUE(target.Open("SELECT * FROM t"));
}

} // namespace

} // namespace Morvik::sql::tests
