#include <sql/DbTableColumnType.h>
#include <sql/DbTableColumnValue.h>
#include <sql/DbTableData.h>
#include <sql/DbTableRowValues.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace Morvik::sql::tests {

namespace {

static_assert(std::is_same_v<decltype(DbTableColumnValue::type), DbTableColumnType>);
static_assert(std::is_same_v<decltype(DbTableRowValues::cells), std::vector<DbTableColumnValue>>);
static_assert(std::is_same_v<decltype(DbTableData::rows), std::vector<DbTableRowValues>>);

// A row, a result and a vector are different types, and none of them converts to another.
static_assert(!std::is_convertible_v<DbTableRowValues, DbTableData>);
static_assert(!std::is_convertible_v<DbTableRowValues, std::vector<DbTableColumnValue>>);

// Vectors of cells and rows grow by moving them.
static_assert(std::is_nothrow_move_constructible_v<DbTableColumnValue>);
static_assert(std::is_nothrow_move_constructible_v<DbTableRowValues>);
static_assert(std::is_nothrow_move_constructible_v<DbTableData>);

using enum DbTableColumnType;
constexpr DbTableColumnType Tags[] = {
    None, Integer, Real, Text, Blob, Null, DateTimeNow, DateTimeNowLocalTime, UnixTimeNow, JulianDayNow};
constexpr int Numbers[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
static_assert(std::ranges::equal(Tags, Numbers, {}, [](auto tag) { return static_cast<int>(tag); }));
static_assert(SQLITE_INTEGER == 1 && SQLITE_FLOAT == 2 && SQLITE_TEXT == 3 && SQLITE_BLOB == 4 && SQLITE_NULL == 5);

TEST(DbTableColumnValueTest, DefaultIsTheUntypedIntegerZero)
{
    alignas(DbTableColumnValue) unsigned char memory[sizeof(DbTableColumnValue)];
    std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xAB));

    auto* const cell = new (memory) DbTableColumnValue;

    EXPECT_EQ(cell->type, None);
    EXPECT_EQ(cell->column, 0U);
    EXPECT_EQ(cell->value, decltype(DbTableColumnValue::value)(0));
    cell->~DbTableColumnValue();
}

TEST(DbTableColumnValueTest, CellReadFromNullHoldsNoInteger)
{
    const DbTableColumnValue readFromNull{None, 2, std::string()};

    EXPECT_THROW(std::get<int>(readFromNull.value), std::bad_variant_access);
    EXPECT_EQ(std::get<std::string>(readFromNull.value), "");
}

TEST(DbTableDataTest, CopyIsIndependentOfItsSource)
{
    const DbTableRowValues row{{{Text, 0, std::string("text")}, {Blob, 1, std::vector<char>{'a', '\0', 'b'}}}};
    const DbTableData data{{row}};

    DbTableData copy = data;
    std::get<std::string>(copy.rows[0].cells[0].value)[0] = '!';
    std::get<std::vector<char>>(copy.rows[0].cells[1].value)[0] = '!';

    EXPECT_EQ(data.rows[0].cells[0].value, row.cells[0].value);
    EXPECT_EQ(data.rows[0].cells[1].value, row.cells[1].value);
}

} // namespace

} // namespace Morvik::sql::tests
