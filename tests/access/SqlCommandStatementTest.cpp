#include <sql/SqlCommand.h>

#include <string_view>
#include <utility>

#include "support/AbandonedConnection.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// Preparing, stepping, rewinding and finalizing a statement.

class SqlCommandPrepareTest : public OpenConnection {
protected:
    const std::string message = LeaveMessage(command);
};

TEST_F(SqlCommandPrepareTest, FirstStatementIsCompiledByByteCountOrUpToAZeroByte)
{
    const std::pair<std::string_view, const char*> calls[] = {
        {"SELECT 12"sv, "sqlite3_prepare_v2(handle, SELECT 12, 9)"},
        {"SELECT 1234"sv.substr(0, 9), "sqlite3_prepare_v2(handle, SELECT 12, 9)"},
        {"SELECT 12; nonsense"sv, "sqlite3_prepare_v2(handle, SELECT 12; nonsense, 19)"},
        {"SELECT 12\0"sv, "sqlite3_prepare_v2(handle, SELECT 12, -1)"},
        {"SELECT 12\0nonsense\0"sv, "sqlite3_prepare_v2(handle, SELECT 12, -1)"}};
    for (const auto& [sql, call] : calls) {
        SCOPED_TRACE(sql);
        EXPECT_THAT(CallsDuring([&, text = sql] { EXPECT_TRUE(command.Prepare(text)); }), ElementsAre(call));
        EXPECT_THAT(command, HasError(0, message));
        EXPECT_EQ(NextInteger(command), 12);
        command.Finalize();
        LeaveMessage(command);
    }
}

TEST_F(SqlCommandPrepareTest, TextWithoutAStatementSucceedsAndHoldsNone)
{
    EXPECT_THAT(CallsDuring([&] { command.Prepare(""); }), ElementsAre("sqlite3_prepare_v2(handle, , 0)"));
    for (const std::string_view sql : {""sv, "\0"sv, " \n\t"sv, "-- nothing"sv}) {
        SCOPED_TRACE(sql);
        EXPECT_TRUE(command.Prepare(sql));
        EXPECT_FALSE(command.Step());
        EXPECT_THAT(command, HasError(0, message));
        EXPECT_TRUE(command.Prepare("SELECT 1"));
        command.Finalize();
    }
}

TEST_F(SqlCommandPrepareTest, SecondPrepareFailsUntilFinalize)
{
    command.Prepare("SELECT 12");
    command.BindInteger(5, 5);

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Prepare("SELECT 34")); }), IsEmpty());
    EXPECT_THAT(command, HasError(SQLITE_RANGE, message));
    EXPECT_EQ(NextInteger(command), 12);

    command.Finalize();
    EXPECT_TRUE(command.Prepare("SELECT 34"));
    EXPECT_EQ(NextInteger(command), 34);
}

TEST_F(SqlCommandPrepareTest, FailedPrepareMakesNoOtherCall)
{
    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Prepare("nonsense")); }),
                ElementsAre("sqlite3_prepare_v2(handle, nonsense, 8)"));
    EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlCommandPrepareTest, StatementReturnedByAFailingPrepareIsFinalized)
{
    const ReplacedResult sqlite("sqlite3_prepare_v2", SQLITE_NOMEM, true);

    EXPECT_FALSE(command.Prepare("SELECT 1"));

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(handle, SELECT 1, 8)", "sqlite3_finalize(statement)"));
    EXPECT_THAT(command, HasError(SQLITE_NOMEM, message));
    EXPECT_FALSE(command.Step());
    EXPECT_TRUE(database.Close());
}

class SqlCommandStepTest : public OpenConnection {
protected:
    SqlCommandStepTest() { command.Execute("CREATE TABLE t(a UNIQUE); INSERT INTO t VALUES (1)"); }

    // Prepares a statement whose step fails. Returns the message of the same statement in raw SQLite.
    std::string PrepareFailingStep()
    {
        static constexpr char Sql[] = "INSERT INTO t VALUES (1)";
        EXPECT_TRUE(command.Prepare(Sql));
        const RawFailure raw = FailureOfExec(RawSqlite(path).Handle(), Sql);
        EXPECT_EQ(raw.code, SQLITE_CONSTRAINT);
        return raw.message;
    }
};

TEST_F(SqlCommandStepTest, RowAndEndAreSuccessesWithoutAMessage)
{
    LeaveMessage(command);
    command.Prepare("SELECT 7");

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(command.Step()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(command, HasError(SQLITE_ROW, ""));
    EXPECT_TRUE(command.HasRowData());

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(command.Step()); }), ElementsAre("sqlite3_step()"));
    EXPECT_THAT(command, HasError(SQLITE_DONE, ""));
    EXPECT_FALSE(command.HasRowData());
}

TEST_F(SqlCommandStepTest, ResetAndFinalizeRepeatTheCodeOfAFailedStep)
{
    const std::string message = PrepareFailingStep();

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(command.Step()); }),
                ElementsAre("sqlite3_step()", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, message));
    EXPECT_FALSE(command.Reset());
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, message));
    EXPECT_TRUE(command.Reset());
    EXPECT_THAT(command, HasError(0, message));

    EXPECT_FALSE(command.Step());
    EXPECT_FALSE(command.Finalize());
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, message));
    EXPECT_TRUE(database.Close()) << "the statement is released";
}

TEST_F(SqlCommandStepTest, FailedStepReadsTheMessageFromTheCurrentConnection)
{
    PrepareFailingStep();
    const AbandonedConnection raw(database);

    EXPECT_FALSE(command.Step());
    EXPECT_THAT(command, HasError(SQLITE_CONSTRAINT, sqlite3_errmsg(nullptr)));
    EXPECT_FALSE(command.Finalize());
}

TEST_F(SqlCommandStepTest, ResetRewindsAndKeepsTheBindings)
{
    command.Prepare("SELECT ? UNION ALL SELECT 8");
    command.BindInteger(1, 7);
    command.Step();
    command.Step();

    EXPECT_TRUE(command.Reset());
    EXPECT_EQ(NextInteger(command), 7);
}

} // namespace

} // namespace Morvik::sql::tests
