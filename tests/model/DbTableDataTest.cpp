#include <sql/DbTableColumnType.h>
#include <sql/DbTableColumnValue.h>
#include <sql/DbTableData.h>
#include <sql/DbTableRowValues.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace Morvik::sql::tests {

namespace {

using CellValue = std::variant<int, double, std::string, std::vector<char>>;
using Bytes = std::vector<char>;

static_assert(std::is_same_v<std::underlying_type_t<DbTableColumnType>, std::int32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnValue::type), DbTableColumnType>);
static_assert(std::is_same_v<decltype(DbTableColumnValue::column), std::uint32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnValue::value), CellValue>);
static_assert(std::is_same_v<decltype(DbTableRowValues::cells), std::vector<DbTableColumnValue>>);
static_assert(std::is_same_v<decltype(DbTableData::rows), std::vector<DbTableRowValues>>);

// A row, a result and a vector are different types, and none of them converts to another.
static_assert(!std::is_convertible_v<DbTableRowValues, DbTableData>);
static_assert(!std::is_convertible_v<DbTableRowValues, std::vector<DbTableColumnValue>>);

// Vectors of cells and rows grow by moving them.
static_assert(std::is_nothrow_move_constructible_v<DbTableColumnValue>);
static_assert(std::is_nothrow_move_constructible_v<DbTableRowValues>);
static_assert(std::is_nothrow_move_constructible_v<DbTableData>);

// The tags count from 0, and the first five after None have the numbers of SQLite's storage classes.
constexpr bool TagsCountFromZero()
{
    using enum DbTableColumnType;
    int number = 0;
    for (const DbTableColumnType tag :
         {None, Integer, Real, Text, Blob, Null, DateTimeNow, DateTimeNowLocalTime, UnixTimeNow, JulianDayNow}) {
        if (static_cast<int>(tag) != number++) {
            return false;
        }
    }
    return true;
}

static_assert(TagsCountFromZero());
static_assert(SQLITE_INTEGER == 1 && SQLITE_FLOAT == 2 && SQLITE_TEXT == 3 && SQLITE_BLOB == 4 && SQLITE_NULL == 5);

const std::string AllocatedText(100, 'x'); // too long for the small buffer inside a std::string

DbTableRowValues TextAndBytes()
{
    return {{{DbTableColumnType::Text, 0, AllocatedText}, {DbTableColumnType::Blob, 1, Bytes{'a', '\0', 'b'}}}};
}

void ExpectCell(const DbTableColumnValue& cell, DbTableColumnType type, std::uint32_t column, const CellValue& value)
{
    EXPECT_EQ(cell.type, type);
    EXPECT_EQ(cell.column, column);
    EXPECT_EQ(cell.value, value);
}

TEST(DbTableColumnValueTest, DefaultIsTheUntypedIntegerZero)
{
    alignas(DbTableColumnValue) unsigned char memory[sizeof(DbTableColumnValue)];
    std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xAB));

    auto* const cell = new (memory) DbTableColumnValue;

    ExpectCell(*cell, DbTableColumnType::None, 0, 0);
    cell->~DbTableColumnValue();
}

TEST(DbTableColumnValueTest, CopyHasAllThreeFields)
{
    const DbTableColumnValue cell{DbTableColumnType::Real, 7, 0.5};
    DbTableColumnValue assigned;
    assigned = cell;

    ExpectCell(DbTableColumnValue(cell), DbTableColumnType::Real, 7, 0.5);
    ExpectCell(assigned, DbTableColumnType::Real, 7, 0.5);
}

TEST(DbTableColumnValueTest, TagAndAlternativeNeedNotAgree)
{
    const DbTableColumnValue readFromNull{DbTableColumnType::None, 2, std::string()};

    EXPECT_THROW(std::get<int>(readFromNull.value), std::bad_variant_access);
    EXPECT_EQ(std::get<std::string>(readFromNull.value), "");
}

TEST(DbTableColumnValueTest, MoveTakesTheTextBufferAndLeavesAUsableSource)
{
    DbTableColumnValue source{DbTableColumnType::Text, 4, AllocatedText};
    const char* const buffer = std::get<std::string>(source.value).data();

    const DbTableColumnValue target = std::move(source);

    ExpectCell(target, DbTableColumnType::Text, 4, AllocatedText);
    EXPECT_EQ(std::get<std::string>(target.value).data(), buffer);
    ASSERT_EQ(source.value.index(), 2U);
    source.value = 5;
    EXPECT_EQ(std::get<int>(source.value), 5);
}

TEST(DbTableColumnValueTest, MoveAssignmentTakesTheBytesBuffer)
{
    DbTableColumnValue source{DbTableColumnType::Blob, 1, Bytes(100, 'b')};
    const char* const buffer = std::get<Bytes>(source.value).data();
    DbTableColumnValue target{DbTableColumnType::Text, 9, AllocatedText};

    target = std::move(source);

    ExpectCell(target, DbTableColumnType::Blob, 1, Bytes(100, 'b'));
    EXPECT_EQ(std::get<Bytes>(target.value).data(), buffer);
    EXPECT_EQ(source.value.index(), 3U);
}

TEST(DbTableDataTest, StartsWithoutRowsAndRowsWithoutCells)
{
    EXPECT_TRUE(DbTableData().rows.empty());
    EXPECT_TRUE(DbTableRowValues().cells.empty());
}

TEST(DbTableDataTest, CopyIsIndependentOfItsSource)
{
    const DbTableData data{{TextAndBytes(), TextAndBytes()}};

    DbTableData copy = data;
    std::get<std::string>(copy.rows[0].cells[0].value)[0] = '!';
    std::get<Bytes>(copy.rows[0].cells[1].value)[0] = '!';
    copy.rows[1].cells.clear();

    for (const DbTableRowValues& row : data.rows) {
        ASSERT_EQ(row.cells.size(), 2U);
        EXPECT_EQ(std::get<std::string>(row.cells[0].value), AllocatedText);
        EXPECT_EQ(std::get<Bytes>(row.cells[1].value), (Bytes{'a', '\0', 'b'}));
    }
}

TEST(DbTableDataTest, MoveTakesTheRowsAndTheirCells)
{
    DbTableData source{{TextAndBytes()}};
    const DbTableRowValues* const rows = source.rows.data();
    const DbTableColumnValue* const cells = rows->cells.data();

    DbTableData target;
    target = std::move(source);
    const DbTableRowValues row = std::move(target.rows.front());

    EXPECT_EQ(target.rows.data(), rows);
    EXPECT_EQ(row.cells.data(), cells);
    target.rows.front().cells.push_back({DbTableColumnType::Integer, 0, 1});
    EXPECT_EQ(target.rows.front().cells.size(), 1U);
}

} // namespace

} // namespace Morvik::sql::tests
