#include <sql/SqlTable.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <memory>
#include <string>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/HasError.h"
#include "support/NoDestructor.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SqlTableCloseTest : public WithOpenDatabase {
protected:
    // Makes the step of the open query fail, and returns the result of finalizing a similar statement in raw SQLite.
    RawFailure LeaveFailedStep()
    {
        static constexpr char Sql[] = "SELECT abs(-9223372036854775807 - 1)";
        EXPECT_TRUE(table->Open(Sql));
        EXPECT_FALSE(table->ReadNext());
        EXPECT_NE(table->GetLastErrorMsg(), "");

        return LegacyWalk(RawSqlite(path).Handle(), Sql).finalize;
    }

    std::unique_ptr<SqlTable> table = std::make_unique<SqlTable>(database);
};

TEST_F(SqlTableCloseTest, ReleasesTheQuery)
{
    table->Open("SELECT 7");
    table->ReadNext();
    const SqliteCallRecorder sqlite;

    const bool closed = table->Close();

    EXPECT_TRUE(closed);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(*table, HasError(0, ""));
    EXPECT_FALSE(table->IsOpen());
    EXPECT_EQ(table->Columns(), 0);
}

TEST_F(SqlTableCloseTest, ClosedCursorSucceedsAndLeavesTheRecord)
{
    table->Open("nonsense");
    const std::string message = table->GetLastErrorMsg();
    const SqliteCallRecorder sqlite;

    const bool closed = table->Close();

    EXPECT_TRUE(closed);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(SQLITE_ERROR, message));
}

// A null message cannot become a string. That exception represents any exception thrown while the message is stored.
TEST_F(SqlTableCloseTest, ExceptionWhileTheMessageIsStoredIsDroppedAndLeavesTheCode)
{
    const RawFailure plain = LeaveFailedStep();
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_errmsg", 0, false);

    const bool closed = table->Close();

    EXPECT_FALSE(closed);
    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(*table, HasError(plain.code, ""));
    table.reset();
    EXPECT_EQ(sqlite.CallsOf("sqlite3_finalize").size(), 1U);
}

TEST_F(SqlTableCloseTest, NothingIsCompiledWhenAnExceptionEndsTheClosingOfThePreviousQuery)
{
    const RawFailure plain = LeaveFailedStep();
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_errmsg", 0, false);

    const bool opened = table->Open("SELECT 7");

    EXPECT_FALSE(opened);
    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(*table, HasError(plain.code, ""));
    EXPECT_TRUE(table->Open("SELECT 7"));
}

TEST_F(SqlTableCloseTest, DestructorDropsAnExceptionToo)
{
    LeaveFailedStep();
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_errmsg", 0, false);

    table.reset();

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)"));
}

TEST_F(SqlTableCloseTest, QueryOnAConnectionThatWasClosedMeanwhileIsKept)
{
    table->Open("SELECT 7");
    table->ReadNext();
    const AbandonedConnection raw(database);
    const SqliteCallRecorder sqlite;

    const bool closed = table->Close();

    EXPECT_TRUE(closed);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(table->IsOpen());
}

TEST_F(SqlTableCloseTest, FailedQueryOnAConnectionThatWasClosedMeanwhileKeepsTheRecord)
{
    LeaveFailedStep();
    const int code = table->GetLastError();
    const std::string message = table->GetLastErrorMsg();
    const AbandonedConnection raw(database);
    const SqliteCallRecorder sqlite;

    const bool closed = table->Close();

    EXPECT_FALSE(closed);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(code, message));
    EXPECT_TRUE(table->IsOpen());
}

TEST_F(SqlTableCloseTest, NothingIsCompiledWhileAQueryIsHeldOnAClosedConnection)
{
    table->Open("SELECT 7");
    table->ReadNext();
    const AbandonedConnection raw(database);
    const SqliteCallRecorder sqlite;

    const bool opened = table->Open("nonsense");

    EXPECT_TRUE(opened);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(table->IsOpen());
}

TEST_F(SqlTableCloseTest, EarlierFailureIsAnsweredWhileAQueryIsHeldOnAClosedConnection)
{
    LeaveFailedStep();
    const int code = table->GetLastError();
    const std::string message = table->GetLastErrorMsg();
    const AbandonedConnection raw(database);
    const SqliteCallRecorder sqlite;

    const bool opened = table->Open("SELECT 7");

    EXPECT_FALSE(opened);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(*table, HasError(code, message));
}

TEST_F(SqlTableCloseTest, DestructorLeavesAQueryOnAClosedConnectionUnfinalized)
{
    table->Open("SELECT 7");
    const AbandonedConnection raw(database);

    {
        const SqliteCallRecorder sqlite;
        table.reset();
        EXPECT_THAT(sqlite.Calls(), IsEmpty());
    }

    ASSERT_NE(raw.Statement(), nullptr);
    EXPECT_EQ(sqlite3_step(raw.Statement()), SQLITE_ROW);
}

TEST_F(SqlTableCloseTest, MoveAssignmentLeavesAQueryOnAClosedConnectionUnfinalized)
{
    table->Open("SELECT 7");
    const AbandonedConnection raw(database);
    NoDestructor<SqlTable> source(database);

    {
        const SqliteCallRecorder sqlite;
        *table = std::move(*source);
        EXPECT_THAT(sqlite.Calls(), IsEmpty());
    }

    EXPECT_NE(raw.Statement(), nullptr);
    EXPECT_FALSE(table->IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
