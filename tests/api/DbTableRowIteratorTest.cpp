#include <sql/DbTableRowIterator.h>

#include <algorithm>
#include <concepts>
#include <iterator>
#include <ranges>
#include <type_traits>
#include <utility>
#include <vector>

#include "api/FacadeTest.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

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

class DbTableRowIteratorTest : public FacadeTest {
protected:
    DbTableRowIteratorTest() { Begin(); }

    /// Begins a query of the numbers 1, 2 and 3.
    void Begin() { EXPECT_TRUE(database.SqlQueryBegin("SELECT a FROM t")); }

    static int First(const DbTableRowValues& cells) { return std::get<int>(cells.cells.at(0).value); }
};

TEST_F(DbTableRowIteratorTest, RangeForVisitsEveryRowOfTheQueryInOrder)
{
    std::vector<int> numbers;

    for (const DbTableRowValues& visited : database) {
        numbers.push_back(First(visited));
    }

    EXPECT_THAT(numbers, ElementsAre(1, 2, 3));
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DbTableRowIteratorTest, AlgorithmsTakeTheRows)
{
    const auto isTwo = [](const DbTableRowValues& cells) { return First(cells) == 2; };
    const DbTableRowIterator found = std::find_if(database.begin(), database.end(), isTwo);
    ASSERT_NE(found, database.end());
    EXPECT_EQ(First(*found), 2);
    const std::vector<DbTableRowValues> rest(database.begin(), database.end());
    EXPECT_THAT(rest, ElementsAre(testing::ResultOf(First, 3)));

    Begin();
    const DbTableRowIterator second = std::ranges::find(database, 2, First);
    EXPECT_EQ(std::ranges::distance(second, database.end()), 2) << "a stopped walk continues with its row";
}

TEST_F(DbTableRowIteratorTest, PrefixReturnsTheIteratorAndPostfixTheEarlierRow)
{
    DbTableRowIterator iterator = database.begin();

    const DbTableRowValues first = *iterator++;
    EXPECT_EQ(First(first), 1);
    EXPECT_EQ(First(*iterator), 2);
    EXPECT_EQ(&++iterator, &iterator);
    EXPECT_EQ(First(*iterator++), 3);
    EXPECT_EQ(iterator, database.end());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DbTableRowIteratorTest, AllIteratorsAndFetchesShareOneCurrentRow)
{
    DbTableRowIterator iterator;
    iterator = database.begin();
    const DbTableRowIterator copy = iterator;
    ASSERT_EQ(First(*copy), 1);

    const DbTableRowIterator second = database.begin();
    EXPECT_EQ(First(*second), 2) << "begin() fetches the next row";
    EXPECT_EQ(&*copy, &*second);
    EXPECT_EQ(copy.operator->(), &*copy);
    EXPECT_EQ(copy, second);

    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(3)"));
    EXPECT_EQ(++iterator, database.end());
}

TEST_F(DbTableRowIteratorTest, BecomesTheEndAfterTheFailureOfAnotherOperation)
{
    DbTableRowIterator iterator = database.begin();
    FailWithMissingCommand();

    EXPECT_EQ(++iterator, database.end());
    EXPECT_EQ(iterator, std::as_const(database).end());
    EXPECT_THAT(database, HasError(112, "Missing command.")) << "end() changes nothing";
}

TEST_F(DbTableRowIteratorTest, EqualityIsByFacadeAndPosition)
{
    DatabaseApi second;
    ASSERT_TRUE(second.OpenDatabase(path, true));
    ASSERT_TRUE(second.SqlQueryBegin("SELECT a FROM t"));
    const DbTableRowIterator none;

    const DbTableRowIterator onRow = database.begin();
    const DbTableRowIterator onSecondRow = second.begin();

    EXPECT_EQ(none, DbTableRowIterator());
    EXPECT_NE(none, database.end());
    EXPECT_NE(onRow, none);
    EXPECT_EQ(onRow, onRow);
    EXPECT_NE(onRow, database.end());
    EXPECT_NE(onRow, onSecondRow);
    EXPECT_NE(database.end(), second.end());
}

} // namespace

} // namespace Morvik::sql::tests
