#include <sql/SqlValue.h>

#include <concepts>
#include <cstddef>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

static_assert(std::is_base_of_v<SqlError, SqlValue> && std::is_convertible_v<SqlValue*, SqlError*>);
static_assert(!std::is_copy_constructible_v<SqlValue> && !std::is_copy_assignable_v<SqlValue>);
static_assert(std::is_nothrow_move_constructible_v<SqlValue> && std::is_nothrow_move_assignable_v<SqlValue>);
static_assert(!std::is_default_constructible_v<SqlValue> && std::is_constructible_v<SqlValue, std::nullptr_t>);
static_assert(std::is_constructible_v<SqlValue, sqlite3_value*> && !std::is_convertible_v<sqlite3_value*, SqlValue>);

template <typename T, typename Value = SqlValue>
concept Readable = requires(Value& value)
{
    {
        value.template GetValue<T>()
        } -> std::same_as<T>;
};

static_assert(Readable<int> && Readable<long long> && Readable<double>);
static_assert(Readable<std::string> && Readable<std::vector<char>>);
static_assert(!Readable<float> && !Readable<long double>);
static_assert(!Readable<bool> && !Readable<char> && !Readable<short> && !Readable<long>);
static_assert(!Readable<unsigned> && !Readable<unsigned long long>);
static_assert(!Readable<const char*> && !Readable<std::string_view> && !Readable<std::vector<unsigned char>>);
static_assert(!Readable<const int> && !Readable<int&>);
static_assert(!Readable<int, const SqlValue>, "a read may set the error");

using SqlValueTest = OpenConnection;

TEST_F(SqlValueTest, StorageClassHasSqlitesNumber)
{
    ReadRow("SELECT 1, 1.5, 'a', x'01', NULL, '', x''");
    int column = 0;
    for (const int type : {1, 2, 3, 4, 5, 3, 4}) {
        EXPECT_EQ(table[column++].GetValueType(), type) << "of column " << column;
    }
}

TEST_F(SqlValueTest, EveryReadMakesItsCallAndLeavesTheError)
{
    ReadRow("SELECT 5000000000, 9007199254740993");
    EXPECT_EQ(table[1].GetValue<long long>(), 9007199254740993);
    SqlValue value = table[0];
    value.SetError(5);
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(value.GetValueType(), 1);
    EXPECT_EQ(value.GetValue<int>(), 705032704) << "the low 32 bits";
    EXPECT_EQ(value.GetValue<long long>(), 5000000000);
    EXPECT_EQ(value.GetValue<double>(), 5e9);
    EXPECT_EQ(value.GetValue<std::string>(), "5000000000");
    EXPECT_EQ(value.GetValue<std::vector<char>>().size(), 10U);

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_value_type()", "sqlite3_value_int()", "sqlite3_value_int64()",
                                            "sqlite3_value_double()", "sqlite3_value_type()", "sqlite3_value_text()",
                                            "sqlite3_value_bytes()", "sqlite3_value_blob()"));
    EXPECT_THAT(value, HasError(5, ""));
}

TEST_F(SqlValueTest, NullReadsAsZeroOrNoBytesButNotText)
{
    ReadRow("SELECT NULL");
    SqlValue value = table[0];

    EXPECT_EQ(value.GetValue<int>(), 0);
    EXPECT_EQ(value.GetValue<long long>(), 0);
    EXPECT_EQ(value.GetValue<double>(), 0.0);
    EXPECT_THAT(value.GetValue<std::vector<char>>(), IsEmpty());
    EXPECT_THAT([&] { value.GetValue<std::string>(); }, ThrowsMessage<std::logic_error>("SQL NULL has no text."));
    EXPECT_THAT(value, HasError(0, ""));
}

TEST_F(SqlValueTest, MoveTakesTheInstanceAndLeavesTheError)
{
    ReadRow("SELECT 7");
    SqlValue source(nullptr);
    source.GetValue<int>();
    source = table[0];
    sqlite3_value* const instance = source.ValueInstance();

    const SqlValue target(std::move(source));

    EXPECT_EQ(target.ValueInstance(), instance);
    EXPECT_THAT(target, HasError(0, ""));
    // NOLINTBEGIN(bugprone-use-after-move): the test checks the moved-from value
    EXPECT_EQ(source.ValueInstance(), nullptr);
    EXPECT_EQ(source.GetValueType(), -1);
    EXPECT_THAT(source, HasError(112, "No value instance exists."));
    // NOLINTEND(bugprone-use-after-move)
}

TEST_F(SqlValueTest, MoveAssignmentExchangesTheInstancesAndLeavesTheErrors)
{
    ReadRow("SELECT 7, 8");
    SqlValue first = table[0];
    SqlValue second = table[1];
    first.SetError(5);
    first.SetErrorMsg("first");
    sqlite3_value* const instances[] = {first.ValueInstance(), second.ValueInstance()};

    EXPECT_EQ(&(first = std::move(second)), &first);

    EXPECT_EQ(first.ValueInstance(), instances[1]);
    EXPECT_THAT(first, HasError(5, "first"));
    // NOLINTBEGIN(bugprone-use-after-move): the test checks the moved-from value
    EXPECT_EQ(second.ValueInstance(), instances[0]);
    EXPECT_THAT(second, HasError(0, ""));
    // NOLINTEND(bugprone-use-after-move)

    SqlValue& same = first;
    first = std::move(same);

    EXPECT_EQ(first.ValueInstance(), instances[1]) << "self-assignment changes nothing";
    EXPECT_THAT(first, HasError(5, "first"));
}

// Reading a missing value returns T{}. The error of that read replaces an earlier error, and the next read keeps it.
template <typename T>
void ExpectMissingValue(SqlValue existing)
{
    SqlValue value(nullptr);
    value.SetError(5);
    value.SetErrorMsg("other");
    EXPECT_EQ(value.GetValueType(), -1);
    EXPECT_THAT(value, HasError(5, "other"));

    EXPECT_THAT(CallsDuring([&] { EXPECT_EQ(value.GetValue<T>(), T{}); }), IsEmpty());
    EXPECT_THAT(value, HasError(112, "No value instance exists."));

    value = std::move(existing);
    EXPECT_NE(value.GetValue<T>(), T{});
    EXPECT_THAT(value, HasError(112, "No value instance exists."));
    EXPECT_TRUE(value.Failed());
}

TEST_F(SqlValueTest, MissingValueReadsAsZeroAndStaysAFailure)
{
    ReadRow("SELECT 7");

    ExpectMissingValue<int>(table[0]);
    ExpectMissingValue<long long>(table[0]);
    ExpectMissingValue<double>(table[0]);
    ExpectMissingValue<std::string>(table[0]);
    ExpectMissingValue<std::vector<char>>(table[0]);
}

} // namespace

} // namespace Morvik::sql::tests
