#include <sql/SqlCommand.h>

#include <string_view>
#include <utility>

#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class SqlCommandPrepareTest : public ConnectedCommand {};

TEST_F(SqlCommandPrepareTest, ViewEndingInAZeroByteHasNoByteCount)
{
    const std::pair<std::string_view, const char*> calls[] = {
        {"SELECT 12"sv, "sqlite3_prepare_v2(handle, SELECT 12, 9)"},
        {"SELECT 1234"sv.substr(0, 9), "sqlite3_prepare_v2(handle, SELECT 12, 9)"},
        {"SELECT 12\0"sv, "sqlite3_prepare_v2(handle, SELECT 12, -1)"},
        {"SELECT 12\0nonsense\0"sv, "sqlite3_prepare_v2(handle, SELECT 12, -1)"}};
    for (const auto& [sql, call] : calls) {
        SCOPED_TRACE(sql);
        EXPECT_THAT(CallsDuring([&, text = sql] { EXPECT_TRUE(command.Prepare(text)); }), ElementsAre(call));
        EXPECT_THAT(command, HasError(0, ""));
        EXPECT_EQ(NextInteger(command), 12);
        command.Finalize();
    }
}

TEST_F(SqlCommandPrepareTest, OnlyTheFirstStatementIsCompiled)
{
    EXPECT_TRUE(command.Prepare("CREATE TABLE t(a); nonsense"));
    EXPECT_TRUE(command.Step());
    EXPECT_THAT(RawSqlite(path).Rows("SELECT name FROM sqlite_master"), ElementsAre(ElementsAre("'t'")));
}

TEST_F(SqlCommandPrepareTest, TextWithoutAStatementSucceedsAndHoldsNone)
{
    for (const std::string_view sql : {""sv, "\0"sv, " \n\t"sv, "-- nothing"sv}) {
        SCOPED_TRACE(sql);
        const std::string message = LeaveMessage();

        EXPECT_TRUE(command.Prepare(sql));
        EXPECT_THAT(command, HasError(0, message));
        EXPECT_FALSE(command.Step());
        EXPECT_THAT(command, HasError(0, message));
        EXPECT_TRUE(command.Prepare("SELECT 1"));
        command.Finalize();
    }
}

TEST_F(SqlCommandPrepareTest, EmptyTextIsPassedWithItsSize)
{
    EXPECT_THAT(CallsDuring([&] { command.Prepare(""); }), ElementsAre("sqlite3_prepare_v2(handle, , 0)"));
}

TEST_F(SqlCommandPrepareTest, ViewWithoutDataIsAMisuse)
{
    const std::string message = LeaveMessage();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Prepare(std::string_view())); }),
                ElementsAre("sqlite3_prepare_v2(handle, null, 0)"));
    EXPECT_THAT(command, HasError(SQLITE_MISUSE, message));
}

TEST_F(SqlCommandPrepareTest, ClosedConnectionIsPassedToSqliteWhichRejectsIt)
{
    SqlDatabase closed;
    SqlCommand onClosed(closed);

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(onClosed.Prepare("SELECT 1")); }),
                ElementsAre("sqlite3_prepare_v2(null, SELECT 1, 8)"));
    EXPECT_THAT(onClosed, HasError(SQLITE_MISUSE, ""));
}

TEST_F(SqlCommandPrepareTest, FailureOfANewCommandHasNoMessage)
{
    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Prepare("nonsense")); }),
                ElementsAre("sqlite3_prepare_v2(handle, nonsense, 8)"));
    EXPECT_THAT(command, HasError(SQLITE_ERROR, ""));
}

TEST_F(SqlCommandPrepareTest, EarlierMessageStays)
{
    const std::string message = LeaveMessage();

    EXPECT_FALSE(command.Prepare("SELECT * FROM missing"));
    EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
    EXPECT_TRUE(command.Prepare("SELECT 1"));
    EXPECT_THAT(command, HasError(0, message));
}

TEST_F(SqlCommandPrepareTest, SecondPrepareFailsUntilFinalize)
{
    const std::string message = LeaveMessage();
    command.Prepare("SELECT 12");
    command.BindInteger(5, 5);

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Prepare("SELECT 34")); }), IsEmpty());
    EXPECT_THAT(command, HasError(SQLITE_RANGE, message));
    EXPECT_EQ(NextInteger(command), 12);

    command.Finalize();
    EXPECT_TRUE(command.Prepare("SELECT 34"));
    EXPECT_EQ(NextInteger(command), 34);
}

TEST_F(SqlCommandPrepareTest, StatementReturnedByAFailingPrepareIsFinalized)
{
    const std::string message = LeaveMessage();
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_prepare_v2", SQLITE_NOMEM, true);

        EXPECT_FALSE(command.Prepare("SELECT 1"));

        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(sqlite.Calls(),
                    ElementsAre("sqlite3_prepare_v2(handle, SELECT 1, 8)", "sqlite3_finalize(statement)"));
    }
    EXPECT_THAT(command, HasError(SQLITE_NOMEM, message));
    EXPECT_FALSE(command.Step());
    EXPECT_TRUE(database.Close());
}

} // namespace

} // namespace Morvik::sql::tests
