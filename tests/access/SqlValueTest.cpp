#include <sql/SqlValue.h>

#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <concepts>
#include <cstddef>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "support/HasError.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_base_of_v<SqlError, SqlValue> && std::is_convertible_v<SqlValue*, SqlError*>);
static_assert(!std::is_polymorphic_v<SqlValue>);
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
static_assert(!Readable<int, const SqlValue>, "a read may write the record");

class SqlValueTest : public WithOpenDatabase {
protected:
    // Steps to the row of `sql`, so that its columns can be read as values.
    void ReadRow(const std::string& sql)
    {
        ASSERT_TRUE(table.Open(sql));
        ASSERT_TRUE(table.ReadNext());
    }

    const SqlTable table{database};
};

TEST_F(SqlValueTest, WrapsTheInstanceWithAFreshRecord)
{
    ReadRow("SELECT 7");
    sqlite3_value* const instance = table[0].ValueInstance();

    const SqlValue value(instance);

    EXPECT_EQ(value.ValueInstance(), instance);
    EXPECT_THAT(value, HasError(0, ""));
    EXPECT_TRUE(value.Succeeded());
}

TEST_F(SqlValueTest, StorageClassIsSqlites)
{
    ReadRow("SELECT 1, 1.5, 'a', x'01', NULL, '', x''");

    EXPECT_EQ(table[0].GetValueType(), 1);
    EXPECT_EQ(table[1].GetValueType(), 2);
    EXPECT_EQ(table[2].GetValueType(), 3);
    EXPECT_EQ(table[3].GetValueType(), 4);
    EXPECT_EQ(table[4].GetValueType(), 5);
    EXPECT_EQ(table[5].GetValueType(), 3);
    EXPECT_EQ(table[6].GetValueType(), 4);
}

TEST_F(SqlValueTest, EveryReadMakesItsCallAndLeavesTheRecord)
{
    ReadRow("SELECT 7");
    SqlValue value = table[0];
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(value.GetValueType(), 1);
    EXPECT_EQ(value.GetValue<int>(), 7);
    EXPECT_EQ(value.GetValue<long long>(), 7);
    EXPECT_EQ(value.GetValue<double>(), 7.0);
    EXPECT_EQ(value.GetValue<std::string>(), "7");
    EXPECT_THAT(value.GetValue<std::vector<char>>(), ElementsAre('7'));

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_value_type()", "sqlite3_value_int()", "sqlite3_value_int64()",
                                            "sqlite3_value_double()", "sqlite3_value_type()", "sqlite3_value_text()",
                                            "sqlite3_value_bytes()", "sqlite3_value_blob()"));
    EXPECT_THAT(value, HasError(0, ""));
}

TEST_F(SqlValueTest, IntegersKeepTheirWidth)
{
    ReadRow("SELECT 5000000000, -9223372036854775807 - 1, -2147483648, 9007199254740993");

    EXPECT_EQ(table[0].GetValue<long long>(), 5000000000);
    EXPECT_EQ(table[0].GetValue<int>(), 705032704) << "the low 32 bits";
    EXPECT_EQ(table[1].GetValue<long long>(), std::numeric_limits<long long>::min());
    EXPECT_EQ(table[2].GetValue<int>(), std::numeric_limits<int>::min());
    EXPECT_EQ(table[3].GetValue<long long>(), 9007199254740993);
    EXPECT_EQ(table[3].GetValue<double>(), 9007199254740992.0);
}

TEST_F(SqlValueTest, SqliteConvertsBetweenStorageClasses)
{
    ReadRow("SELECT '12abc', 1.5, x'3132'");

    EXPECT_EQ(table[0].GetValue<int>(), 12);
    EXPECT_EQ(table[0].GetValue<double>(), 12.0);
    EXPECT_EQ(table[1].GetValue<int>(), 1);
    EXPECT_EQ(table[1].GetValue<std::string>(), "1.5");
    EXPECT_THAT(table[1].GetValue<std::vector<char>>(), ElementsAre('1', '.', '5'));
    EXPECT_EQ(table[2].GetValue<std::string>(), "12");
}

TEST_F(SqlValueTest, NullReadsAsZeroAndAsNoBytes)
{
    ReadRow("SELECT NULL");
    SqlValue value = table[0];

    EXPECT_EQ(value.GetValue<int>(), 0);
    EXPECT_EQ(value.GetValue<long long>(), 0);
    EXPECT_EQ(value.GetValue<double>(), 0.0);
    EXPECT_THAT(value.GetValue<std::vector<char>>(), IsEmpty());
    EXPECT_THAT(value, HasError(0, ""));
}

TEST_F(SqlValueTest, TextOfNullIsALogicError)
{
    ReadRow("SELECT NULL");
    SqlValue value = table[0];

    EXPECT_THROW(value.GetValue<std::string>(), std::logic_error);
    EXPECT_THAT(value, HasError(0, ""));
}

TEST_F(SqlValueTest, BytesAreWholeAndTextEndsAtItsFirstZeroByte)
{
    ReadRow("SELECT x'0100FF00', 'ab' || char(0) || 'cd', x'', '', zeroblob(3)");

    EXPECT_THAT(table[0].GetValue<std::vector<char>>(), ElementsAre('\x01', '\0', '\xFF', '\0'));
    EXPECT_EQ(table[1].GetValue<std::string>(), "ab");
    EXPECT_THAT(table[1].GetValue<std::vector<char>>(), ElementsAre('a', 'b', '\0', 'c', 'd'));
    EXPECT_THAT(table[2].GetValue<std::vector<char>>(), IsEmpty());
    EXPECT_EQ(table[3].GetValue<std::string>(), "");
    EXPECT_THAT(table[4].GetValue<std::vector<char>>(), ElementsAre('\0', '\0', '\0'));
}

// If the pointer were read before the length, there would be two bytes a letter, and the length would be that of the
// converted text.
TEST_F(SqlValueTest, BytesOfAUtf16TextAreReadAsUtf8)
{
    ASSERT_EQ(sqlite3_exec(database.GetNativeDatabaseInstance<sqlite3>(),
                           "PRAGMA encoding = 'UTF-16'; CREATE TABLE t(a); INSERT INTO t VALUES ('abc')", nullptr,
                           nullptr, nullptr),
              SQLITE_OK);
    ReadRow("SELECT a, a FROM t");

    EXPECT_THAT(table[0].GetValue<std::vector<char>>(), ElementsAre('a', 'b', 'c'));
    EXPECT_EQ(table[1].GetValue<std::string>(), "abc");
}

TEST_F(SqlValueTest, DataThatCannotBeHandedOutIsOutOfMemory)
{
    ReadRow("SELECT 'text', x'07'");
    SqliteCallRecorder sqlite;

    sqlite.ReplaceNextResult("sqlite3_value_text", 0, false);
    EXPECT_THROW(table[0].GetValue<std::string>(), std::bad_alloc);
    sqlite.ReplaceNextResult("sqlite3_value_blob", 0, false);
    EXPECT_THROW(table[1].GetValue<std::vector<char>>(), std::bad_alloc);

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_EQ(table[0].GetValue<std::string>(), "text");
}

} // namespace

} // namespace Morvik::sql::tests
