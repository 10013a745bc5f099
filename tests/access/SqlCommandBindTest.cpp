#include <sql/SqlCommand.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <string_view>

#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class SqlCommandBindTest : public OpenConnection {
protected:
    // The type and the value that SQLite has for the parameter that `bind` sets.
    template <typename Bind>
    std::vector<std::string> Bound(Bind bind)
    {
        EXPECT_TRUE(command.Prepare("SELECT typeof(?1), quote(?1)"));
        EXPECT_TRUE(bind());
        EXPECT_TRUE(command.Step());
        std::vector<std::string> bound{command.ColumnText(0), command.ColumnText(1)};
        command.Finalize();
        return bound;
    }
};

TEST_F(SqlCommandBindTest, IntegersAreBoundExactly)
{
    for (const int value : {0, 1, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_THAT(Bound([&] { return command.BindInteger(1, value); }),
                    ElementsAre("integer", std::to_string(value)));
    }
    for (const long long value : {0LL, 1LL << 31, -(1LL << 31) - 1, 1LL << 32, (1LL << 53) + 1,
                                  std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()}) {
        EXPECT_THAT(Bound([&] { return command.BindInt64(1, value); }), ElementsAre("integer", std::to_string(value)));
    }
}

TEST_F(SqlCommandBindTest, RealsAreBoundBitForBit)
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

TEST_F(SqlCommandBindTest, TextsAreBoundByteForByte)
{
    command.Prepare("SELECT ?1, typeof(?1)");
    for (const std::string_view text :
         {""sv, "a"sv, "it's \"quoted\""sv, "a\0b"sv, "\0"sv, "\xC3\xA4"sv, "\xFF\xFE"sv, "abcdef"sv.substr(1, 3)}) {
        EXPECT_TRUE(command.BindText(1, text));
        ASSERT_TRUE(command.Step());
        EXPECT_EQ(command.ColumnText(0), text);
        EXPECT_EQ(command.ColumnText(1), "text");
        command.Reset();
    }
}

TEST_F(SqlCommandBindTest, EmptyDataIsBoundEmptyAndMissingDataAsNull)
{
    const unsigned char bytes[] = {0x00, 0xFF, 0x27, 0x00, 0x80};

    EXPECT_THAT(Bound([&] { return command.BindBlob(1, bytes); }), ElementsAre("blob", "X'00FF270080'"));
    EXPECT_THAT(Bound([&] { return command.BindBlob(1, {bytes, 0}); }), ElementsAre("blob", "X''"));
    EXPECT_THAT(Bound([&] { return command.BindBlob(1, {}); }), ElementsAre("null", "NULL"));
    EXPECT_THAT(Bound([&] { return command.BindText(1, ""); }), ElementsAre("text", "''"));
    EXPECT_THAT(Bound([&] { return command.BindText(1, {}); }), ElementsAre("null", "NULL"));
    EXPECT_THAT(Bound([&] { return command.BindDouble(1, std::numeric_limits<double>::quiet_NaN()); }),
                ElementsAre("null", "NULL"));
}

// SQLite checks only the size here, so the bytes need not exist. If a size above the largest int were cut to an int, it
// would be negative, and SQLite would bind "abc".
TEST_F(SqlCommandBindTest, SizeBeyondAnIntIsRejectedAndNotCut)
{
    constexpr std::size_t TooLarge = std::size_t{std::numeric_limits<int>::max()} + 6;
    command.Prepare("SELECT ?");

    EXPECT_FALSE(command.BindText(1, {"abc", TooLarge}));
    EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
    EXPECT_FALSE(command.BindBlob(1, {reinterpret_cast<const unsigned char*>("abc"), TooLarge}));
    EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
}

const unsigned char TwoBytes[] = {'a', 'b'};

const struct {
    bool (*run)(SqlCommand& command);
    std::string function;
    std::string arguments;
} Operations[] = {
    {[](SqlCommand& command) { return command.BindInteger(1, 7); }, "sqlite3_bind_int", "(1, 7)"},
    {[](SqlCommand& command) { return command.BindInt64(1, 5000000000); }, "sqlite3_bind_int64", "(1, 5000000000)"},
    {[](SqlCommand& command) { return command.BindDouble(1, 1.5); }, "sqlite3_bind_double", "(1, 1.500000)"},
    {[](SqlCommand& command) { return command.BindText(1, "ab"); }, "sqlite3_bind_text", "(1, ab, 2, transient)"},
    {[](SqlCommand& command) { return command.BindBlob(1, TwoBytes); }, "sqlite3_bind_blob", "(1, ab, 2, transient)"},
    {[](SqlCommand& command) { return command.ClearBindings(); }, "sqlite3_clear_bindings", "()"},
    {[](SqlCommand& command) { return command.Reset(); }, "sqlite3_reset", "()"},
    {[](SqlCommand& command) { return command.Finalize(); }, "sqlite3_finalize", "(statement)"},
};

class SqlCommandOperationTest : public OpenConnection {
protected:
    const std::string message = LeaveMessage(command);
};

TEST_F(SqlCommandOperationTest, MakesOneCallOnItsStatementAndKeepsTheMessage)
{
    for (const auto& [run, function, arguments] : Operations) {
        SCOPED_TRACE(function);
        LeaveMessage(command);
        EXPECT_THAT(CallsDuring([&, act = run] { EXPECT_FALSE(act(command)); }), IsEmpty()) << "without a statement";
        EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
        command.Prepare("SELECT ?");

        EXPECT_THAT(CallsDuring([&, act = run] { EXPECT_TRUE(act(command)); }), ElementsAre(function + arguments));
        EXPECT_THAT(command, HasError(0, message));
        command.Finalize();
    }
}

TEST_F(SqlCommandOperationTest, OnlyResultZeroCountsAsSuccess)
{
    for (const auto& [run, function, arguments] : Operations) {
        for (const int result : {SQLITE_NOMEM, SQLITE_ROW, SQLITE_DONE}) {
            SCOPED_TRACE(function + " returns " + std::to_string(result));
            command.Prepare("SELECT ?");
            const ReplacedResult replaced(function, result, true);

            EXPECT_FALSE(run(command));

            EXPECT_THAT(command, HasError(result, message));
            command.Finalize();
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
