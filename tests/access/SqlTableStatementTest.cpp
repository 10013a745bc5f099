#include <sql/SqlTable.h>

#include <functional>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/NoDestructor.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Stepping, rewinding and closing a query.

const char* const Overflow = "SELECT abs(-9223372036854775807 - 1)";

using SqlTableStepTest = OpenConnection;

TEST_F(SqlTableStepTest, RowsEndWithCodeZeroAndStartAgain)
{
    table.Open("SELECT 7");
    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table.ReadNext()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.ReadNext()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_TRUE(table.IsOpen());
    EXPECT_EQ(table.Columns(), 1);

    EXPECT_EQ(NextInteger(table), 7);
}

TEST_F(SqlTableStepTest, ClosedCursorMakesNoCallAndLeavesTheError)
{
    const std::string message = LeaveMessage(table);
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(table.IsOpen());
    EXPECT_EQ(table.Columns(), 0);
    EXPECT_FALSE(table.ReadNext());
    EXPECT_TRUE(table.Reset());
    EXPECT_TRUE(table.Close());

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(table, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlTableStepTest, ResetRewindsToBeforeTheFirstRow)
{
    ReadRow("SELECT 7 UNION ALL SELECT 8");
    table.ReadNext();

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table.Reset()); }), ElementsAre("sqlite3_reset()"));
    EXPECT_THAT(table, HasError(0, ""));
    EXPECT_EQ(NextInteger(table), 7);
}

// SQLite chooses the codes. The cursor must return those of a raw legacy statement in the same situation.
TEST_F(SqlTableStepTest, FailedStepHasTheCodesOfTheLegacyInterface)
{
    RawSqlite(path).Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (1)");
    RawSqlite raw(path);
    RawSqlite other(path);
    for (const auto& [sql, meanwhile] : {std::pair("INSERT INTO t VALUES (1)", ""), std::pair(Overflow, ""),
                                         std::pair("SELECT * FROM t", "ALTER TABLE t ADD COLUMN b"),
                                         std::pair("SELECT * FROM t", "BEGIN EXCLUSIVE")}) {
        SCOPED_TRACE(std::string(sql) + ", meanwhile " + meanwhile);
        RawLegacyStatement legacy(raw.Handle(), sql);
        EXPECT_TRUE(table.Open(sql));
        other.Execute(meanwhile);
        const RawFailure step = legacy.Step();
        const RawFailure reset = legacy.Reset();
        legacy.Step();
        const RawFailure finalize = legacy.Finalize();
        EXPECT_NE(step.message, "");
        EXPECT_NE(reset.code, SQLITE_OK);

        EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.ReadNext()); }),
                    ElementsAre("sqlite3_step()", "sqlite3_errmsg(handle)"));
        EXPECT_THAT(table, HasError(step.code, step.message));
        EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.Reset()); }), ElementsAre("sqlite3_reset()"));
        EXPECT_THAT(table, HasError(reset.code, ""));
        EXPECT_FALSE(table.ReadNext());
        EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.Close()); }),
                    ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
        EXPECT_THAT(table, HasError(finalize.code, finalize.message));
        EXPECT_FALSE(table.IsOpen());
    }
}

class SqlTableCloseTest : public OpenConnection {
protected:
    std::optional<SqlTable> cursor{std::in_place, database};
};

TEST_F(SqlTableCloseTest, ReleasesTheQuery)
{
    cursor->Open("SELECT 7");
    cursor->ReadNext();

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(cursor->Close()); }), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(*cursor, HasError(0, ""));
    EXPECT_FALSE(cursor->IsOpen());
    EXPECT_EQ(cursor->Columns(), 0);
}

// SQLite's message is replaced with null. Storing null throws an exception, as running out of memory would.
TEST_F(SqlTableCloseTest, ExceptionWhileClosingLeavesTheCode)
{
    const int code = LegacyWalk(RawSqlite(path).Handle(), Overflow).finalize.code;
    const auto close = [&] { EXPECT_FALSE(cursor->Close()); };
    const auto open = [&] { EXPECT_FALSE(cursor->Open("SELECT 7")); };
    const auto destroy = [&] { cursor.reset(); };
    for (const std::function<void()>& operation : std::initializer_list<std::function<void()>>{close, open, destroy}) {
        cursor->Open(Overflow);
        ASSERT_FALSE(cursor->ReadNext());
        const ReplacedResult sqlite("sqlite3_errmsg");

        operation();

        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
        if (cursor.has_value()) {
            EXPECT_THAT(*cursor, HasError(code, ""));
            EXPECT_FALSE(cursor->IsOpen());
        }
    }
}

// The connection counts as closed while the cursor holds a query, so the cursor may not finalize the query.
class SqlTableWithoutConnectionTest : public SqlTableCloseTest {
protected:
    SqlTableWithoutConnectionTest()
    {
        EXPECT_TRUE(cursor->Open("SELECT 7") && cursor->ReadNext());
        raw.emplace(database);
    }

    std::optional<AbandonedConnection> raw;
};

TEST_F(SqlTableWithoutConnectionTest, CloseAndOpenKeepTheQueryAndTheError)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(cursor->Close());
    EXPECT_TRUE(cursor->Open("nonsense"));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*cursor, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(cursor->IsOpen());
}

TEST_F(SqlTableWithoutConnectionTest, DestructorLeavesTheQueryUnfinalized)
{
    EXPECT_THAT(CallsDuring([&] { cursor.reset(); }), IsEmpty());
    ASSERT_NE(raw->Statement(), nullptr);
    EXPECT_EQ(sqlite3_column_int(raw->Statement(), 0), 7);
}

TEST_F(SqlTableWithoutConnectionTest, MoveAssignmentLeavesTheQueryUnfinalized)
{
    NoDestructor<SqlTable> source(database);

    EXPECT_THAT(CallsDuring([&] { *cursor = std::move(*source); }), IsEmpty());
    EXPECT_NE(raw->Statement(), nullptr);
    EXPECT_FALSE(cursor->IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
