#include <sql/SqlValue.h>

#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <gmock/gmock.h>

#include <string>
#include <type_traits>
#include <vector>

#include "support/HasError.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int Missing = 112;
constexpr char MissingMessage[] = "No value instance exists.";

template <typename T>
class SqlValueMissingTest : public testing::Test {};

using ValueTypes = testing::Types<int, long long, double, std::string, std::vector<char>>;

struct ValueTypeName {
    template <typename T>
    static std::string GetName(int)
    {
        if (std::is_same_v<T, int>) {
            return "Int";
        }
        if (std::is_same_v<T, long long>) {
            return "LongLong";
        }
        if (std::is_same_v<T, double>) {
            return "Double";
        }
        return std::is_same_v<T, std::string> ? "String" : "Bytes";
    }
};

TYPED_TEST_SUITE(SqlValueMissingTest, ValueTypes, ValueTypeName);

TYPED_TEST(SqlValueMissingTest, ReadsAsTheZeroOfTheTypeAndRecordsWhy)
{
    SqlValue value(nullptr);
    const SqliteCallRecorder sqlite;
    EXPECT_EQ(value.GetValueType(), -1);
    EXPECT_THAT(value, HasError(0, ""));

    const TypeParam read = value.template GetValue<TypeParam>();

    EXPECT_EQ(read, TypeParam{});
    EXPECT_THAT(value, HasError(Missing, MissingMessage));
    EXPECT_TRUE(value.Failed());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TYPED_TEST(SqlValueMissingTest, RecordsAgainOverAnotherMessage)
{
    SqlValue value(nullptr);
    value.SetError(5);
    value.SetErrorMsg("other");

    value.template GetValue<TypeParam>();

    EXPECT_THAT(value, HasError(Missing, MissingMessage));
}

TEST(SqlValueMissingInstanceTest, FailureStaysRecordedThroughReadsThatSucceed)
{
    SqlDatabase database;
    database.Open(":memory:", false);
    const SqlTable table(database);
    table.Open("SELECT 7");
    ASSERT_TRUE(table.ReadNext());
    SqlValue value(nullptr);
    value.GetValue<int>();
    value = table[0];

    EXPECT_EQ(value.GetValue<int>(), 7);
    EXPECT_EQ(value.GetValue<long long>(), 7);
    EXPECT_EQ(value.GetValue<double>(), 7.0);
    EXPECT_EQ(value.GetValue<std::string>(), "7");
    EXPECT_THAT(value.GetValue<std::vector<char>>(), ElementsAre('7'));

    EXPECT_THAT(value, HasError(Missing, MissingMessage));
    EXPECT_TRUE(value.Failed());
}

} // namespace

} // namespace Morvik::sql::tests
