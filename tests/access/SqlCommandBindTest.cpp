#include <sql/SqlCommand.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <string_view>

#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class SqlCommandBindTest : public ConnectedCommand {
protected:
    SqlCommandBindTest() { command.Execute("CREATE TABLE t(a)"); }

    // Inserts a row with the parameter that `bind` sets. Returns the type and the value that SQLite stored.
    template <typename Bind>
    std::vector<std::string> Stored(Bind bind)
    {
        EXPECT_TRUE(command.Prepare("INSERT INTO t VALUES (?)"));
        EXPECT_TRUE(bind());
        EXPECT_TRUE(command.Step());
        EXPECT_TRUE(command.Finalize());
        return RawSqlite(path).Rows("SELECT typeof(a), a FROM t ORDER BY rowid DESC").front();
    }
};

TEST_F(SqlCommandBindTest, IntegersAreStoredExactly)
{
    for (const int value : {0, 1, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_THAT(Stored([&] { return command.BindInteger(1, value); }),
                    ElementsAre("'integer'", std::to_string(value)));
    }
    for (const long long value : {0LL, 1LL << 31, -(1LL << 31) - 1, 1LL << 32, (1LL << 53) + 1,
                                  std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()}) {
        EXPECT_THAT(Stored([&] { return command.BindInt64(1, value); }),
                    ElementsAre("'integer'", std::to_string(value)));
    }
}

TEST_F(SqlCommandBindTest, RealsAreStoredBitForBit)
{
    using Limits = std::numeric_limits<double>;
    command.Prepare("SELECT ?");
    for (const double value : {0.0, -0.0, 0.1, -1.5, 1e300, 9007199254740993.0, Limits::min(), Limits::denorm_min(),
                               Limits::max(), Limits::lowest(), Limits::infinity(), -Limits::infinity()}) {
        EXPECT_TRUE(command.BindDouble(1, value));
        ASSERT_TRUE(command.Step());
        EXPECT_EQ(command.ColumnDouble(0), value);
        EXPECT_EQ(std::signbit(command.ColumnDouble(0)), std::signbit(value));
        command.Reset();
    }
}

TEST_F(SqlCommandBindTest, TextsAreStoredByteForByte)
{
    command.Prepare("SELECT ?1, typeof(?1)");
    for (const std::string_view text :
         {""sv, "a"sv, "it's \"quoted\""sv, "a\0b"sv, "\0"sv, "\xC3\xA4"sv, "\xFF\xFE"sv}) {
        EXPECT_TRUE(command.BindText(1, text));
        ASSERT_TRUE(command.Step());
        EXPECT_EQ(command.ColumnText(0), text);
        EXPECT_EQ(command.ColumnText(1), "text");
        command.Reset();
    }
    EXPECT_TRUE(command.Finalize());
    EXPECT_THAT(Stored([&] { return command.BindText(1, "abcdef"sv.substr(1, 3)); }), ElementsAre("'text'", "'bcd'"));
}

TEST_F(SqlCommandBindTest, BlobsAreStoredByteForByte)
{
    const unsigned char bytes[] = {0x00, 0xFF, 0x27, 0x00, 0x80};

    EXPECT_THAT(Stored([&] { return command.BindBlob(1, bytes); }), ElementsAre("'blob'", "X'00FF270080'"));
}

TEST_F(SqlCommandBindTest, EmptyDataIsStoredEmptyAndMissingDataAsNull)
{
    const unsigned char byte = 1;

    EXPECT_THAT(Stored([&] { return command.BindText(1, ""); }), ElementsAre("'text'", "''"));
    EXPECT_THAT(Stored([&] { return command.BindBlob(1, {&byte, 0}); }), ElementsAre("'blob'", "X''"));
    EXPECT_THAT(Stored([&] { return command.BindText(1, {}); }), ElementsAre("'null'", "NULL"));
    EXPECT_THAT(Stored([&] { return command.BindBlob(1, {}); }), ElementsAre("'null'", "NULL"));
    EXPECT_THAT(Stored([&] { return command.BindDouble(1, std::numeric_limits<double>::quiet_NaN()); }),
                ElementsAre("'null'", "NULL"));
}

TEST_F(SqlCommandBindTest, CallersBuffersNeedNotOutliveTheCall)
{
    command.Prepare("SELECT ?, ?");
    std::string text(100, 'a');
    std::vector<unsigned char> bytes(100, 0x61);
    command.BindText(1, text);
    command.BindBlob(2, bytes);
    text.assign(100, 'z');
    bytes.assign(100, 0x7A);

    command.Step();

    EXPECT_EQ(command.ColumnText(0), std::string(100, 'a'));
    EXPECT_THAT(command.ColumnBlob(1), ElementsAreArray(std::vector<unsigned char>(100, 0x61)));
}

// SQLite checks only the size here, so the bytes need not exist. If a size above that of an int were cut, it would be
// negative, and SQLite would bind "abc".
TEST_F(SqlCommandBindTest, DataBeyondSqlitesLimitIsRejectedAndNotCut)
{
    const char text[] = "abc";
    const unsigned char bytes[] = {1, 2, 3};
    const int previous = sqlite3_limit(Handle(), SQLITE_LIMIT_LENGTH, -1);
    command.Prepare("SELECT ?");

    for (const std::size_t limit : {std::size_t{100}, std::size_t{std::numeric_limits<int>::max()} + 5}) {
        sqlite3_limit(Handle(), SQLITE_LIMIT_LENGTH, limit == 100 ? 100 : previous);
        EXPECT_FALSE(command.BindText(1, {text, limit + 1}));
        EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
        EXPECT_FALSE(command.BindBlob(1, {bytes, limit + 1}));
        EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
        EXPECT_TRUE(command.BindText(1, std::string(100, 'a')));
    }
}

TEST_F(SqlCommandBindTest, ClearBindingsSetsEveryParameterToNull)
{
    command.Prepare("SELECT ?, ?");
    command.BindInteger(1, 1);
    command.BindText(2, "a");

    EXPECT_TRUE(command.ClearBindings());

    EXPECT_TRUE(command.Step());
    EXPECT_TRUE(command.ColumnIsNull(0));
    EXPECT_TRUE(command.ColumnIsNull(1));
}

// The operations on the held statement: each makes one call, stores its code and keeps the earlier message.
struct Operation {
    const char* name;
    bool (*run)(SqlCommand& command, int index);
    std::string call;
};

const unsigned char TwoBytes[] = {'a', 'b'};

const Operation Binds[] = {
    {"BindInteger", [](SqlCommand& command, int index) { return command.BindInteger(index, 7); },
     "sqlite3_bind_int(1, 7)"},
    {"BindInt64", [](SqlCommand& command, int index) { return command.BindInt64(index, 5000000000); },
     "sqlite3_bind_int64(1, 5000000000)"},
    {"BindDouble", [](SqlCommand& command, int index) { return command.BindDouble(index, 1.5); },
     "sqlite3_bind_double(1, 1.500000)"},
    {"BindText", [](SqlCommand& command, int index) { return command.BindText(index, "ab"); },
     "sqlite3_bind_text(1, ab, 2, transient)"},
    {"BindBlob", [](SqlCommand& command, int index) { return command.BindBlob(index, TwoBytes); },
     "sqlite3_bind_blob(1, ab, 2, transient)"},
};

const Operation Others[] = {
    {"ClearBindings", [](SqlCommand& command, int) { return command.ClearBindings(); }, "sqlite3_clear_bindings()"},
    {"Reset", [](SqlCommand& command, int) { return command.Reset(); }, "sqlite3_reset()"},
    {"Finalize", [](SqlCommand& command, int) { return command.Finalize(); }, "sqlite3_finalize(statement)"},
};

constexpr auto NameOfOperation = [](const auto& operation) { return operation.param.name; };

class SqlCommandOperationTest : public ConnectedCommand, public testing::WithParamInterface<Operation> {
protected:
    bool Run(int index = 1) { return GetParam().run(command, index); }

    const std::string message = LeaveMessage();
};

TEST_P(SqlCommandOperationTest, MakesOneCallAndKeepsTheEarlierMessage)
{
    command.Prepare("SELECT ?");

    EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(Run()); }), ElementsAre(GetParam().call));
    EXPECT_THAT(command, HasError(0, message));
}

TEST_P(SqlCommandOperationTest, WithoutAStatementReturnsFalseAndLeavesTheRecord)
{
    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(Run()); }), IsEmpty());
    EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
}

TEST_P(SqlCommandOperationTest, OnlyResultZeroCountsAsSuccess)
{
    for (const int result : {SQLITE_NOMEM, SQLITE_ROW, SQLITE_DONE}) {
        command.Finalize();
        command.Prepare("SELECT ?");
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(GetParam().call.substr(0, GetParam().call.find('(')), result, true);

        EXPECT_FALSE(Run());

        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(command, HasError(result, message));
    }
}

INSTANTIATE_TEST_SUITE_P(Binds, SqlCommandOperationTest, testing::ValuesIn(Binds), NameOfOperation);
INSTANTIATE_TEST_SUITE_P(Others, SqlCommandOperationTest, testing::ValuesIn(Others), NameOfOperation);

using SqlCommandBindFailureTest = SqlCommandOperationTest;

TEST_P(SqlCommandBindFailureTest, IndexOutOfRangeKeepsTheEarlierMessage)
{
    command.Prepare("SELECT ?");
    for (const int index : {0, -1, 2, std::numeric_limits<int>::max()}) {
        command.BindInteger(1, 1);

        EXPECT_FALSE(Run(index)) << index;
        EXPECT_THAT(command, HasError(SQLITE_RANGE, message)) << index;
    }
}

TEST_P(SqlCommandBindFailureTest, SteppedStatementMustBeResetFirst)
{
    StepTo("SELECT ?");

    EXPECT_FALSE(Run());

    EXPECT_THAT(command, HasError(SQLITE_MISUSE, ""));
    EXPECT_FALSE(command.HasRowData());
    EXPECT_TRUE(command.Reset());
    EXPECT_TRUE(Run());
}

INSTANTIATE_TEST_SUITE_P(Binds, SqlCommandBindFailureTest, testing::ValuesIn(Binds), NameOfOperation);

} // namespace

} // namespace Morvik::sql::tests
