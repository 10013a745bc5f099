#include <sql/SqlTable.h>

#include <type_traits>
#include <utility>

#include "support/NoDestructor.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<SqlTable> && !std::is_copy_assignable_v<SqlTable>);
static_assert(std::is_nothrow_move_constructible_v<SqlTable> && std::is_nothrow_move_assignable_v<SqlTable>);
static_assert(std::is_constructible_v<SqlTable, SqlDatabase&> && !std::is_convertible_v<SqlDatabase&, SqlTable>);
static_assert(!std::is_constructible_v<SqlTable, SqlDatabase>, "a temporary connection would not outlive it");
static_assert(!std::is_polymorphic_v<SqlTable> && sizeof(SqlTable) == sizeof(void*));

class SqlTableTest : public OpenConnection {};

TEST_F(SqlTableTest, StartsClosedAndIsDestroyedWithoutACall)
{
    const SqliteCallRecorder sqlite;
    {
        const SqlTable table(database);

        EXPECT_THAT(table, HasError(0, ""));
        EXPECT_FALSE(table.IsOpen());
        EXPECT_EQ(table.Columns(), 0);
    }
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(SqlTableTest, ConstantCursorIsWalkedAndKeepsItsConnectionOpen)
{
    const SqlTable table(database);

    EXPECT_TRUE(table.Open("SELECT 7 UNION ALL SELECT 8"));
    EXPECT_EQ(NextInteger(table), 7);
    EXPECT_EQ(NextInteger(table), 8);
    EXPECT_EQ(NextInteger(table), std::nullopt);
    EXPECT_TRUE(table.Reset());
    EXPECT_FALSE(database.Close());
    EXPECT_EQ(database.GetLastError(), SQLITE_BUSY);
    EXPECT_TRUE(table.Close());
    EXPECT_TRUE(database.Close());
}

TEST_F(SqlTableTest, CursorMadeBeforeTheConnectionOpensWorksAfterwards)
{
    SqlDatabase late;
    const SqlTable table(late);
    ASSERT_FALSE(table.Open("SELECT 7"));
    late.Open(path, false);

    EXPECT_TRUE(table.Open("SELECT 7"));
    EXPECT_EQ(NextInteger(table), 7);
}

TEST_F(SqlTableTest, DestructorFinalizesTheQueryOnce)
{
    std::optional<SqlTable> table(std::in_place, database);
    table->Open("SELECT 7");

    EXPECT_THAT(CallsDuring([&] { table.reset(); }), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_TRUE(database.Close());
}

TEST_F(SqlTableTest, MoveTakesTheQueryAndTheErrorOver)
{
    NoDestructor<SqlTable> source(database);
    source->Open("SELECT 7 UNION ALL SELECT 8");
    source->ReadNext();
    const SqliteCallRecorder sqlite;

    const SqlTable target(std::move(*source));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(target, HasError(SQLITE_ROW, ""));
    EXPECT_EQ(target.GetInteger(0), 7);
    EXPECT_EQ(NextInteger(target), 8);
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

TEST_F(SqlTableTest, MoveAssignmentFinalizesTheQueryAndTakesTheConnectionOver)
{
    SqlDatabase other;
    other.Open(":memory:", false);
    RawSqlite(path).Execute("CREATE TABLE t(a)");
    NoDestructor<SqlTable> source(database);
    source->Open("nonsense");
    const std::string message = source->GetLastErrorMsg();
    SqlTable target(other);
    target.Open("SELECT 8");

    EXPECT_THAT(CallsDuring([&] { EXPECT_EQ(&(target = std::move(*source)), &target); }),
                ElementsAre("sqlite3_finalize(statement)"));

    EXPECT_FALSE(target.IsOpen());
    EXPECT_THAT(target, HasError(SQLITE_ERROR, message));
    EXPECT_TRUE(target.Open("SELECT * FROM t"));
}

class SqlTableOpenTest : public ConnectedCursor {};

TEST_F(SqlTableOpenTest, CompilesWithTheLegacyCallAndWithoutATail)
{
    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table.Open("SELECT 7")); }),
                ElementsAre("sqlite3_prepare(handle, SELECT 7, -1)"));
    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_TRUE(table.IsOpen());
    EXPECT_EQ(table.Columns(), 1);
}

TEST_F(SqlTableOpenTest, OnlyTheFirstStatementBeforeAZeroByteIsCompiled)
{
    for (const std::string& sql : {"SELECT 7\0nonsense"s, "SELECT 7; nonsense"s}) {
        EXPECT_TRUE(table.Open(sql));
        EXPECT_EQ(NextInteger(table), 7);
        EXPECT_FALSE(table.ReadNext());
        EXPECT_THAT(table, HasError(0, ""));
    }
}

TEST_F(SqlTableOpenTest, TextWithoutAStatementSucceedsAndStaysClosed)
{
    for (const char* sql : {"", " \n", "-- comment"}) {
        EXPECT_TRUE(table.Open(sql)) << sql;
        EXPECT_FALSE(table.IsOpen()) << sql;
        EXPECT_EQ(table.Columns(), 0) << sql;
        EXPECT_FALSE(table.ReadNext()) << sql;
        EXPECT_THAT(table, HasError(0, "")) << sql;
    }
}

TEST_F(SqlTableOpenTest, RejectedTextLeavesSqlitesErrorUntilASuccess)
{
    const RawFailure raw = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT * FROM missing");

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.Open("SELECT * FROM missing")); }),
                ElementsAre("sqlite3_prepare(handle, SELECT * FROM missing, -1)", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(table, HasError(SQLITE_ERROR, raw.message));
    EXPECT_FALSE(table.IsOpen());

    EXPECT_TRUE(table.Open("SELECT 7"));
    EXPECT_THAT(table, HasError(0, ""));
}

TEST_F(SqlTableOpenTest, SecondOpenFinalizesTheFirstQueryAndCompilesTheSecond)
{
    ReadRow("SELECT 8, 9");
    for (const char* sql : {"SELECT 7", "SELECT 7"}) { // the same text is not rewound, but compiled again
        EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table.Open(sql)); }),
                    ElementsAre("sqlite3_finalize(statement)", "sqlite3_prepare(handle, SELECT 7, -1)"));
        EXPECT_EQ(table.Columns(), 1);
        EXPECT_EQ(NextInteger(table), 7);
    }

    EXPECT_FALSE(table.Open("nonsense"));
    EXPECT_FALSE(table.IsOpen());
    EXPECT_TRUE(database.Close()) << "no query is held";
}

TEST_F(SqlTableOpenTest, FailureOfFinalizingTheFirstQueryIsOverwritten)
{
    table.Open("SELECT abs(-9223372036854775807 - 1)");
    ASSERT_FALSE(table.ReadNext());
    ASSERT_NE(table.GetLastErrorMsg(), "");

    EXPECT_THAT(
        CallsDuring([&] { EXPECT_TRUE(table.Open("SELECT 7")); }),
        ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)", "sqlite3_prepare(handle, SELECT 7, -1)"));
    EXPECT_THAT(table, HasError(0, ""));
}

// If finalizing succeeds, its code replaces the earlier one, so the failure is reported as a success.
TEST_F(SqlTableOpenTest, FinalizingReplacesTheCodeOfAFailedCompilation)
{
    for (const int finalized : {SQLITE_OK, SQLITE_CORRUPT}) {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_prepare", SQLITE_NOMEM, true);
        sqlite.ReplaceNextResult("sqlite3_finalize", finalized, true);

        EXPECT_EQ(table.Open("SELECT 7"), finalized == SQLITE_OK);

        EXPECT_FALSE(sqlite.Pending());
        std::vector<std::string> calls{"sqlite3_prepare(handle, SELECT 7, -1)", "sqlite3_errmsg(handle)",
                                       "sqlite3_finalize(statement)"};
        if (finalized != SQLITE_OK) {
            calls.emplace_back("sqlite3_errmsg(handle)");
        }
        EXPECT_EQ(sqlite.Calls(), calls);
        EXPECT_THAT(table, HasError(finalized, finalized == SQLITE_OK ? "" : sqlite3_errmsg(Handle())));
        EXPECT_FALSE(table.IsOpen());
    }
}

} // namespace

} // namespace Morvik::sql::tests
