#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <limits>
#include <string>

#include "support/HasError.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The operations that work on the held statement, store their code and keep the earlier message.
struct Operation {
    const char* name;
    bool (*run)(SqlCommand& command, int index);
    const char* call;
};

const unsigned char Bytes[] = {'a', 'b'};

const Operation Binds[] = {
    {"BindInteger", [](SqlCommand& command, int index) { return command.BindInteger(index, 7); },
     "sqlite3_bind_int(1, 7)"},
    {"BindInt64", [](SqlCommand& command, int index) { return command.BindInt64(index, 5000000000); },
     "sqlite3_bind_int64(1, 5000000000)"},
    {"BindDouble", [](SqlCommand& command, int index) { return command.BindDouble(index, 1.5); },
     "sqlite3_bind_double(1, 1.500000)"},
    {"BindText", [](SqlCommand& command, int index) { return command.BindText(index, "ab"); },
     "sqlite3_bind_text(1, ab, 2, transient)"},
    {"BindBlob", [](SqlCommand& command, int index) { return command.BindBlob(index, Bytes); },
     "sqlite3_bind_blob(1, ab, 2, transient)"},
};

const Operation Others[] = {
    {"ClearBindings", [](SqlCommand& command, int) { return command.ClearBindings(); }, "sqlite3_clear_bindings()"},
    {"Reset", [](SqlCommand& command, int) { return command.Reset(); }, "sqlite3_reset()"},
    {"Finalize", [](SqlCommand& command, int) { return command.Finalize(); }, "sqlite3_finalize(statement)"},
};

std::string FunctionOf(const std::string& call)
{
    return call.substr(0, call.find('('));
}

class SqlCommandOperationTest : public WithOpenDatabase, public testing::WithParamInterface<Operation> {
protected:
    SqlCommandOperationTest()
    {
        command.Execute("CREATE TABLE t(a)");
        command.Execute("nonsense");
        message = command.GetLastErrorMsg();
        EXPECT_NE(message, "");
    }

    SqlCommand command{database};
    std::string message; // of an earlier failure; the test checks whether it stays
};

TEST_P(SqlCommandOperationTest, MakesOneCallAndKeepsTheEarlierMessage)
{
    command.Prepare("INSERT INTO t VALUES (?)");
    const SqliteCallRecorder sqlite;

    const bool succeeded = GetParam().run(command, 1);

    EXPECT_TRUE(succeeded);
    EXPECT_THAT(sqlite.Calls(), ElementsAre(GetParam().call));
    EXPECT_THAT(command, HasError(0, message));
}

TEST_P(SqlCommandOperationTest, WithoutAStatementReturnsFalseAndLeavesTheRecord)
{
    const SqliteCallRecorder sqlite;

    const bool succeeded = GetParam().run(command, 1);

    EXPECT_FALSE(succeeded);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
}

TEST_P(SqlCommandOperationTest, OnlyResultZeroCountsAsSuccess)
{
    for (const int result : {SQLITE_NOMEM, SQLITE_ROW, SQLITE_DONE}) {
        command.Finalize();
        command.Prepare("INSERT INTO t VALUES (?)");
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(FunctionOf(GetParam().call), result, true);

        const bool succeeded = GetParam().run(command, 1);

        EXPECT_FALSE(succeeded);
        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(command, HasError(result, message));
    }
}

INSTANTIATE_TEST_SUITE_P(Binds, SqlCommandOperationTest, testing::ValuesIn(Binds),
                         [](const auto& operation) { return operation.param.name; });
INSTANTIATE_TEST_SUITE_P(Others, SqlCommandOperationTest, testing::ValuesIn(Others),
                         [](const auto& operation) { return operation.param.name; });

class SqlCommandBindFailureTest : public SqlCommandOperationTest {};

TEST_P(SqlCommandBindFailureTest, IndexOutOfRangeKeepsTheEarlierMessage)
{
    command.Prepare("INSERT INTO t VALUES (?)");

    for (const int index : {0, -1, 2, std::numeric_limits<int>::max()}) {
        command.BindInteger(1, 1);

        const bool bound = GetParam().run(command, index);

        EXPECT_FALSE(bound) << index;
        EXPECT_THAT(command, HasError(SQLITE_RANGE, message)) << index;
    }
}

TEST_P(SqlCommandBindFailureTest, SteppedStatementMustBeResetFirst)
{
    command.Prepare("SELECT ?");
    command.Step();
    EXPECT_THAT(command, HasError(SQLITE_ROW, ""));

    const bool bound = GetParam().run(command, 1);

    EXPECT_FALSE(bound);
    EXPECT_THAT(command, HasError(SQLITE_MISUSE, ""));
    EXPECT_FALSE(command.HasRowData());
    EXPECT_TRUE(command.Reset());
    EXPECT_TRUE(GetParam().run(command, 1));
}

INSTANTIATE_TEST_SUITE_P(Binds, SqlCommandBindFailureTest, testing::ValuesIn(Binds),
                         [](const auto& operation) { return operation.param.name; });

} // namespace

} // namespace Morvik::sql::tests
