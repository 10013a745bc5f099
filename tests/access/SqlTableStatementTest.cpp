#include <sql/SqlTable.h>

#include <functional>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/NoDestructor.h"
#include "support/OpenConnection.h"
#include "support/RawLegacyStatement.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Stepping, rewinding and closing a query.

const char* const Overflow = "SELECT abs(-9223372036854775807 - 1)";

class SqlTableStepTest : public ConnectedCursor {};

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
    const std::string message = LeaveMessage();
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(table.ReadNext());
    EXPECT_TRUE(table.Reset());
    EXPECT_TRUE(table.Close());

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(table, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlTableStepTest, AnyOtherResultCountsAsAFailureWithAMessage)
{
    table.Open("SELECT 7");
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_OK, false);

    EXPECT_FALSE(table.ReadNext());

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(table, HasError(SQLITE_OK, sqlite3_errmsg(Handle())));
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
        RawLegacyStatement legacy(raw, sql);
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
    std::optional<SqlTable> table{std::in_place, database};
};

TEST_F(SqlTableCloseTest, ReleasesTheQuery)
{
    table->Open("SELECT 7");
    table->ReadNext();

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table->Close()); }), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(*table, HasError(0, ""));
    EXPECT_FALSE(table->IsOpen());
    EXPECT_EQ(table->Columns(), 0);
}

// Making a string of a null message throws an exception, like any other failure to store the message.
TEST_F(SqlTableCloseTest, ExceptionWhileClosingLeavesTheCode)
{
    const int code = LegacyWalk(RawSqlite(path).Handle(), Overflow).finalize.code;
    const auto close = [&] { EXPECT_FALSE(table->Close()); };
    const auto open = [&] { EXPECT_FALSE(table->Open("SELECT 7")); };
    const auto destroy = [&] { table.reset(); };
    for (const std::function<void()>& operation : std::initializer_list<std::function<void()>>{close, open, destroy}) {
        table->Open(Overflow);
        ASSERT_FALSE(table->ReadNext());
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_errmsg", 0, false);

        operation();

        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
        if (table.has_value()) {
            EXPECT_THAT(*table, HasError(code, ""));
            EXPECT_FALSE(table->IsOpen());
        }
    }
}

// The connection counts as closed while the cursor holds a query. The query may no longer be finalized.
class SqlTableWithoutConnectionTest : public SqlTableCloseTest {
protected:
    SqlTableWithoutConnectionTest()
    {
        EXPECT_TRUE(table->Open("SELECT 7") && table->ReadNext());
        raw.emplace(database);
    }

    std::optional<AbandonedConnection> raw;
};

TEST_F(SqlTableWithoutConnectionTest, CloseAndOpenKeepTheQueryAndTheError)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(table->Close());
    EXPECT_TRUE(table->Open("nonsense"));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(table->IsOpen());
}

TEST_F(SqlTableWithoutConnectionTest, DestructorLeavesTheQueryUnfinalized)
{
    EXPECT_THAT(CallsDuring([&] { table.reset(); }), IsEmpty());
    ASSERT_NE(raw->Statement(), nullptr);
    EXPECT_EQ(sqlite3_column_int(raw->Statement(), 0), 7);
}

TEST_F(SqlTableWithoutConnectionTest, MoveAssignmentLeavesTheQueryUnfinalized)
{
    NoDestructor<SqlTable> source(database);

    EXPECT_THAT(CallsDuring([&] { *table = std::move(*source); }), IsEmpty());
    EXPECT_NE(raw->Statement(), nullptr);
    EXPECT_FALSE(table->IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
