#include <sql/DbTableRowIterator.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <concepts>
#include <iterator>
#include <numeric>
#include <ranges>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/Cells.h"
#include "support/OpenFacade.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::input_iterator<DbTableRowIterator>);
static_assert(!std::forward_iterator<DbTableRowIterator>, "all iterators of a facade share one current row");
static_assert(std::sentinel_for<DbTableRowIterator, DbTableRowIterator>);
static_assert(std::semiregular<DbTableRowIterator> && std::equality_comparable<DbTableRowIterator>);
static_assert(std::same_as<std::iter_value_t<DbTableRowIterator>, DbTableRowValues>);
static_assert(std::same_as<std::iter_reference_t<DbTableRowIterator>, const DbTableRowValues&>);
static_assert(std::same_as<decltype(++std::declval<DbTableRowIterator&>()), DbTableRowIterator&>);
static_assert(std::same_as<std::iterator_traits<DbTableRowIterator>::iterator_category, std::input_iterator_tag>);
static_assert(std::convertible_to<decltype(*std::declval<DbTableRowIterator&>()++), DbTableRowValues>);
static_assert(std::ranges::input_range<DatabaseApi&> && std::ranges::common_range<DatabaseApi&>);
static_assert(!std::ranges::range<const DatabaseApi&>, "beginning a walk fetches a row");

class DbTableRowIteratorTest : public OpenFacade {
protected:
    DbTableRowIteratorTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2), (3), (4)"));
        EXPECT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    }

    static int First(const DbTableRowValues& row) { return std::get<int>(row.cells.at(0).value); }
};

TEST_F(DbTableRowIteratorTest, RangeForVisitsEveryRowInOrder)
{
    std::vector<int> numbers;

    for (const DbTableRowValues& row : database) {
        numbers.push_back(First(row));
    }

    EXPECT_THAT(numbers, ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DbTableRowIteratorTest, ClassicAlgorithmsTakeTheRows)
{
    const auto isTwo = [](const DbTableRowValues& row) { return First(row) == 2; };
    const DbTableRowIterator found = std::find_if(database.begin(), database.end(), isTwo);
    ASSERT_NE(found, database.end());
    EXPECT_EQ(First(*found), 2);

    const std::vector<DbTableRowValues> rest(database.begin(), database.end());
    EXPECT_EQ(rest.size(), 2U);
    EXPECT_EQ(First(rest.at(0)), 3);
    EXPECT_EQ(First(rest.at(1)), 4);

    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    const auto add = [](int sum, const DbTableRowValues& row) { return sum + First(row); };
    EXPECT_EQ(std::accumulate(database.begin(), database.end(), 0, add), 10);
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DbTableRowIteratorTest, PostfixIncrementReturnsTheEarlierRow)
{
    DbTableRowIterator row = database.begin();

    const DbTableRowValues first = *row++;

    EXPECT_EQ(First(first), 1);
    EXPECT_EQ(First(*row), 2);
    EXPECT_EQ(First(*row++), 2);
    EXPECT_EQ(First(*row++), 3);
    EXPECT_EQ(First(*row++), 4);
    EXPECT_EQ(row, database.end());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DbTableRowIteratorTest, RangeForVisitsNothingWithoutAQuery)
{
    ASSERT_TRUE(database.CloseReadTable());
    int rows = 0;

    for (const DbTableRowValues& row : database) {
        rows += static_cast<int>(row.cells.size());
    }

    EXPECT_EQ(rows, 0);
    EXPECT_THAT(database, HasError(111, "Table isn't open."));
}

TEST_F(DbTableRowIteratorTest, AlgorithmsOfTheRangesLibraryWalkTheQuery)
{
    const auto third = std::ranges::find(database, 3, First);
    ASSERT_NE(third, database.end());
    EXPECT_EQ(First(*third), 3);

    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    EXPECT_EQ(std::ranges::count_if(
                  database, [](int number) { return number % 2 == 0; }, First),
              2);

    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    std::vector<int> numbers;
    std::ranges::transform(database, std::back_inserter(numbers), First);
    EXPECT_THAT(numbers, ElementsAre(1, 2, 3, 4));
}

TEST_F(DbTableRowIteratorTest, StoppedWalkGoesOnWithTheNextRow)
{
    const auto second = std::ranges::find(database, 2, First);
    std::vector<int> rest;

    std::ranges::for_each(
        second, database.end(), [&](int number) { rest.push_back(number); }, First);

    EXPECT_THAT(rest, ElementsAre(2, 3, 4));
}

TEST_F(DbTableRowIteratorTest, BothIncrementsFetchTheNextRow)
{
    DbTableRowIterator iterator = database.begin();
    EXPECT_EQ(First(*iterator), 1);

    EXPECT_EQ(&++iterator, &iterator);
    EXPECT_EQ(First(*iterator), 2);

    iterator++;
    EXPECT_EQ(First(*iterator), 3);
}

TEST_F(DbTableRowIteratorTest, ArrowAndStarReachTheSameRow)
{
    const DbTableRowIterator iterator = database.begin();

    EXPECT_EQ(iterator->cells.size(), 1U);
    EXPECT_EQ(iterator.operator->(), &*iterator);
}

TEST_F(DbTableRowIteratorTest, BeginTwiceGivesTheFirstAndThenTheSecondRow)
{
    const DbTableRowIterator first = database.begin();
    ASSERT_EQ(First(*first), 1);

    const DbTableRowIterator second = database.begin();

    EXPECT_EQ(First(*second), 2);
    EXPECT_EQ(&*first, &*second) << "one current row, shown by every iterator";
    EXPECT_EQ(first, second);
}

TEST_F(DbTableRowIteratorTest, CopiesShareTheWalk)
{
    DbTableRowIterator iterator = database.begin();
    const DbTableRowIterator copy = iterator;

    ++iterator;

    EXPECT_EQ(First(*copy), 2);
    EXPECT_EQ(copy, iterator);
}

TEST_F(DbTableRowIteratorTest, WalkOfIteratorsAndOfSingleRowsIsTheSame)
{
    DbTableRowIterator iterator = database.begin();
    DbTableRowValues row;

    ASSERT_TRUE(database.ReadNextRow(row));
    ++iterator;

    EXPECT_EQ(First(row), 2);
    EXPECT_EQ(First(*iterator), 3);
}

TEST_F(DbTableRowIteratorTest, BecomesTheEndAfterTheLastRow)
{
    DbTableRowIterator iterator = database.begin();
    for (int row = 1; row < 4; ++row) {
        ASSERT_NE(++iterator, database.end());
    }

    ++iterator;

    EXPECT_EQ(iterator, database.end());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DbTableRowIteratorTest, BecomesTheEndWhenAStepFails)
{
    const std::string sql = "SELECT abs(iif(a = 2, -9223372036854775808, a)) FROM t";
    const PlainWalk plain = LegacyWalk(RawSqlite(path).Handle(), sql);
    ASSERT_EQ(plain.rows, 1);
    ASSERT_TRUE(database.SqlQueryBegin(sql));
    DbTableRowIterator iterator = database.begin();
    ASSERT_NE(iterator, database.end());

    ++iterator;

    EXPECT_EQ(iterator, database.end());
    EXPECT_THAT(database, HasError(plain.step.code, plain.step.message));
}

TEST_F(DbTableRowIteratorTest, BecomesTheEndWhileAnotherOperationsFailureStands)
{
    DbTableRowIterator iterator = database.begin();
    FailWithMissingCommand();

    ++iterator;

    EXPECT_EQ(iterator, database.end());
    EXPECT_THAT(database, HasError(112, "Missing command."));
}

TEST_F(DbTableRowIteratorTest, EndTouchesNothing)
{
    FailWithMissingCommand();

    EXPECT_EQ(database.end(), database.end());
    EXPECT_EQ(std::as_const(database).end(), database.end());

    EXPECT_THAT(database, HasError(112, "Missing command."));
    ASSERT_TRUE(database.Execute("SELECT 0"));
    EXPECT_EQ(First(*database.begin()), 1);
}

TEST_F(DbTableRowIteratorTest, EqualityIsByFacadeAndPosition)
{
    DatabaseApi other;
    ASSERT_TRUE(other.OpenDatabase(path, true));
    ASSERT_TRUE(other.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowIterator none;

    const DbTableRowIterator onRow = database.begin();
    const DbTableRowIterator onOtherRow = other.begin();

    EXPECT_EQ(none, DbTableRowIterator());
    EXPECT_NE(none, database.end());
    EXPECT_NE(onRow, none);
    EXPECT_EQ(onRow, onRow);
    EXPECT_NE(onRow, database.end());
    EXPECT_NE(onRow, onOtherRow);
    EXPECT_NE(database.end(), other.end());
}

TEST_F(DbTableRowIteratorTest, DefaultConstructedIteratorIsAssignedLater)
{
    DbTableRowIterator iterator;

    iterator = database.begin();

    EXPECT_EQ(First(*iterator), 1);
}

} // namespace

} // namespace Morvik::sql::tests
