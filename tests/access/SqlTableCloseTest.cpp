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

class SqlTableCloseTest : public OpenConnection {
protected:
    // Makes the step of the open query fail. Returns the code of finalizing a similar statement in raw SQLite.
    int LeaveFailedStep()
    {
        static constexpr char Sql[] = "SELECT abs(-9223372036854775807 - 1)";
        EXPECT_TRUE(table->Open(Sql));
        EXPECT_FALSE(table->ReadNext());
        EXPECT_NE(table->GetLastErrorMsg(), "");
        return LegacyWalk(RawSqlite(path).Handle(), Sql).finalize.code;
    }

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

// A null message cannot become a string. That exception represents any exception thrown while the message is stored.
TEST_F(SqlTableCloseTest, ExceptionWhileClosingLeavesTheCode)
{
    const auto close = [&] { EXPECT_FALSE(table->Close()); };
    const auto open = [&] { EXPECT_FALSE(table->Open("SELECT 7")); };
    const auto destroy = [&] { table.reset(); };
    for (const std::function<void()>& operation : std::initializer_list<std::function<void()>>{close, open, destroy}) {
        const int code = LeaveFailedStep();
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

// A query is held on a closed connection. Close() and Open() keep it and return whether the record's code is a success.
TEST_F(SqlTableCloseTest, QueryOnAClosedConnectionIsKept)
{
    table->Open("SELECT 7");
    table->ReadNext();
    const AbandonedConnection raw(database);
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(table->Close());
    EXPECT_TRUE(table->Open("nonsense"));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(table->IsOpen());
}

TEST_F(SqlTableCloseTest, FailedQueryOnAClosedConnectionKeepsTheRecord)
{
    LeaveFailedStep();
    const int code = table->GetLastError();
    const std::string message = table->GetLastErrorMsg();
    const AbandonedConnection raw(database);
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(table->Close());
    EXPECT_FALSE(table->Open("SELECT 7"));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(code, message));
    EXPECT_TRUE(table->IsOpen());
}

TEST_F(SqlTableCloseTest, DestructorLeavesAQueryOnAClosedConnectionUnfinalized)
{
    table->Open("SELECT 7");
    const AbandonedConnection raw(database);

    EXPECT_THAT(CallsDuring([&] { table.reset(); }), IsEmpty());
    ASSERT_NE(raw.Statement(), nullptr);
    EXPECT_EQ(sqlite3_step(raw.Statement()), SQLITE_ROW);
}

TEST_F(SqlTableCloseTest, MoveAssignmentLeavesAQueryOnAClosedConnectionUnfinalized)
{
    table->Open("SELECT 7");
    const AbandonedConnection raw(database);
    NoDestructor<SqlTable> source(database);

    EXPECT_THAT(CallsDuring([&] { *table = std::move(*source); }), IsEmpty());
    EXPECT_NE(raw.Statement(), nullptr);
    EXPECT_FALSE(table->IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
