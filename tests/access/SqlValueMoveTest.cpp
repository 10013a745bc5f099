#include <sql/SqlValue.h>

#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <gmock/gmock.h>

#include <string>
#include <type_traits>
#include <utility>

#include "support/HasError.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

static_assert(!std::is_copy_constructible_v<SqlValue> && !std::is_copy_assignable_v<SqlValue>);
static_assert(std::is_nothrow_move_constructible_v<SqlValue> && std::is_nothrow_move_assignable_v<SqlValue>);

constexpr int MissingInstance = 112;
constexpr char MissingInstanceMessage[] = "No value instance exists.";

class SqlValueMoveTest : public WithOpenDatabase {
protected:
    // Steps to the row of `sql`, so that its columns can be read as values.
    void ReadRow(const std::string& sql)
    {
        ASSERT_TRUE(table.Open(sql));
        ASSERT_TRUE(table.ReadNext());
    }

    const SqlTable table{database};
};

TEST_F(SqlValueMoveTest, MoveTakesTheInstanceAndStartsAFreshRecord)
{
    ReadRow("SELECT 7");
    SqlValue source(nullptr);
    source.GetValue<int>();
    source = table[0];
    sqlite3_value* const instance = source.ValueInstance();

    const SqlValue target(std::move(source));

    EXPECT_EQ(target.ValueInstance(), instance);
    EXPECT_THAT(target, HasError(0, ""));
    // NOLINTBEGIN(bugprone-use-after-move): what the source is left with is the point
    EXPECT_EQ(source.ValueInstance(), nullptr);
    EXPECT_EQ(source.GetValueType(), -1);
    EXPECT_THAT(source, HasError(MissingInstance, MissingInstanceMessage));
    // NOLINTEND(bugprone-use-after-move)
}

TEST_F(SqlValueMoveTest, MoveAssignmentExchangesTheInstancesAndLeavesTheRecords)
{
    ReadRow("SELECT 7, 8");
    SqlValue first = table[0];
    SqlValue second = table[1];
    first.SetError(5);
    first.SetErrorMsg("first");
    sqlite3_value* const instances[] = {first.ValueInstance(), second.ValueInstance()};

    SqlValue& result = first = std::move(second);

    EXPECT_EQ(&result, &first);
    EXPECT_EQ(first.ValueInstance(), instances[1]);
    EXPECT_THAT(first, HasError(5, "first"));
    // NOLINTBEGIN(bugprone-use-after-move): what the source is left with is the point
    EXPECT_EQ(second.ValueInstance(), instances[0]);
    EXPECT_THAT(second, HasError(0, ""));
    // NOLINTEND(bugprone-use-after-move)
}

TEST_F(SqlValueMoveTest, SelfAssignmentChangesNothing)
{
    ReadRow("SELECT 7");
    SqlValue value = table[0];
    sqlite3_value* const instance = value.ValueInstance();
    value.SetError(5);
    value.SetErrorMsg("message");
    SqlValue& same = value;

    value = std::move(same);

    EXPECT_EQ(value.ValueInstance(), instance);
    EXPECT_THAT(value, HasError(5, "message"));
}

} // namespace

} // namespace Morvik::sql::tests
