#include <sql/DbTableColumnType.h>
#include <sql/DbTableColumnValue.h>
#include <sql/DbTableData.h>
#include <sql/DbTableRowValues.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace Morvik::sql::tests {

namespace {

using CellValue = std::variant<int, double, std::string, std::vector<char>>;

static_assert(std::is_same_v<std::underlying_type_t<DbTableColumnType>, std::int32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnValue::type), DbTableColumnType>);
static_assert(std::is_same_v<decltype(DbTableColumnValue::column), std::uint32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnValue::value), CellValue>);
static_assert(std::is_same_v<decltype(DbTableRowValues::cells), std::vector<DbTableColumnValue>>);
static_assert(std::is_same_v<decltype(DbTableData::rows), std::vector<DbTableRowValues>>);

// A row is not a result, and a vector is neither, so that none of them converts to another.
static_assert(!std::is_convertible_v<DbTableRowValues, DbTableData>);
static_assert(!std::is_convertible_v<DbTableRowValues, std::vector<DbTableColumnValue>>);

// Vectors of cells and rows grow by moving them.
static_assert(std::is_nothrow_move_constructible_v<DbTableColumnValue>);
static_assert(std::is_nothrow_move_constructible_v<DbTableRowValues>);
static_assert(std::is_nothrow_move_constructible_v<DbTableData>);

const std::string LongText(100, 'x'); // too long for the small buffer inside a std::string

DbTableRowValues TextAndBytes()
{
    return {{{DbTableColumnType::Text, 0, LongText}, {DbTableColumnType::Blob, 1, std::vector<char>{'a', '\0', 'b'}}}};
}

TEST(DbTableColumnTypeTest, CountsFromNoneToTheTimeTags)
{
    EXPECT_EQ(static_cast<int>(DbTableColumnType::None), 0);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::DateTimeNow), 6);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::DateTimeNowLocalTime), 7);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::UnixTimeNow), 8);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::JulianDayNow), 9);
}

TEST(DbTableColumnTypeTest, HasTheNumbersOfSqlitesStorageClasses)
{
    EXPECT_EQ(static_cast<int>(DbTableColumnType::Integer), SQLITE_INTEGER);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::Real), SQLITE_FLOAT);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::Text), SQLITE_TEXT);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::Blob), SQLITE_BLOB);
    EXPECT_EQ(static_cast<int>(DbTableColumnType::Null), SQLITE_NULL);
}

TEST(DbTableColumnValueTest, DefaultIsTheUntypedIntegerZero)
{
    const DbTableColumnValue cell;

    EXPECT_EQ(cell.type, DbTableColumnType::None);
    EXPECT_EQ(cell.column, 0U);
    ASSERT_EQ(cell.value.index(), 0U);
    EXPECT_EQ(std::get<int>(cell.value), 0);
}

TEST(DbTableColumnValueTest, DefaultReplacesWhateverTheMemoryHeld)
{
    alignas(DbTableColumnValue) unsigned char memory[sizeof(DbTableColumnValue)];
    std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xAB));

    auto* const cell = new (memory) DbTableColumnValue;

    EXPECT_EQ(cell->type, DbTableColumnType::None);
    EXPECT_EQ(cell->column, 0U);
    EXPECT_EQ(cell->value, CellValue(0));
    cell->~DbTableColumnValue();
}

TEST(DbTableColumnValueTest, FillsFromTypeColumnAndValueInThisOrder)
{
    const DbTableColumnValue cell{DbTableColumnType::Integer, 3, 42};

    EXPECT_EQ(cell.type, DbTableColumnType::Integer);
    EXPECT_EQ(cell.column, 3U);
    EXPECT_EQ(std::get<int>(cell.value), 42);
}

TEST(DbTableColumnValueTest, KeepsTheAlternativesInTheOrderOfTheStorageClasses)
{
    EXPECT_EQ((DbTableColumnValue{DbTableColumnType::Integer, 0, 1}.value.index()), 0U);
    EXPECT_EQ((DbTableColumnValue{DbTableColumnType::Real, 0, 1.0}.value.index()), 1U);
    EXPECT_EQ((DbTableColumnValue{DbTableColumnType::Text, 0, std::string("1")}.value.index()), 2U);
    EXPECT_EQ((DbTableColumnValue{DbTableColumnType::Blob, 0, std::vector<char>{'1'}}.value.index()), 3U);
}

TEST(DbTableColumnValueTest, TagAndAlternativeNeedNotAgree)
{
    const DbTableColumnValue readFromNull{DbTableColumnType::None, 2, std::string()};

    EXPECT_THROW(std::get<int>(readFromNull.value), std::bad_variant_access);
    EXPECT_EQ(std::get<std::string>(readFromNull.value), "");
}

TEST(DbTableColumnValueTest, CopyHasAllThreeFields)
{
    const DbTableColumnValue cell{DbTableColumnType::Real, 7, 0.5};

    const DbTableColumnValue copy = cell;
    DbTableColumnValue assigned;
    assigned = cell;

    for (const DbTableColumnValue& each : {copy, assigned}) {
        EXPECT_EQ(each.type, DbTableColumnType::Real);
        EXPECT_EQ(each.column, 7U);
        EXPECT_EQ(each.value, CellValue(0.5));
    }
}

TEST(DbTableColumnValueTest, MoveTakesTheTextBufferAndLeavesAUsableSource)
{
    DbTableColumnValue source{DbTableColumnType::Text, 4, LongText};
    const char* const buffer = std::get<std::string>(source.value).data();

    const DbTableColumnValue target = std::move(source);

    EXPECT_EQ(target.type, DbTableColumnType::Text);
    EXPECT_EQ(target.column, 4U);
    EXPECT_EQ(std::get<std::string>(target.value), LongText);
    EXPECT_EQ(std::get<std::string>(target.value).data(), buffer);
    ASSERT_EQ(source.value.index(), 2U);
    source.value = 5;
    EXPECT_EQ(std::get<int>(source.value), 5);
}

TEST(DbTableColumnValueTest, MoveAssignmentTakesTheBytesBuffer)
{
    DbTableColumnValue source{DbTableColumnType::Blob, 1, std::vector<char>(100, 'b')};
    const char* const buffer = std::get<std::vector<char>>(source.value).data();
    DbTableColumnValue target{DbTableColumnType::Text, 9, LongText};

    target = std::move(source);

    EXPECT_EQ(target.type, DbTableColumnType::Blob);
    EXPECT_EQ(target.column, 1U);
    EXPECT_EQ(std::get<std::vector<char>>(target.value).data(), buffer);
    EXPECT_EQ(source.value.index(), 3U);
}

TEST(DbTableRowValuesTest, CopyIsIndependentOfItsSource)
{
    const DbTableRowValues row = TextAndBytes();

    DbTableRowValues copy = row;
    std::get<std::string>(copy.cells[0].value)[0] = '!';
    std::get<std::vector<char>>(copy.cells[1].value)[0] = '!';
    copy.cells.pop_back();

    ASSERT_EQ(row.cells.size(), 2U);
    EXPECT_EQ(std::get<std::string>(row.cells[0].value), LongText);
    EXPECT_EQ(std::get<std::vector<char>>(row.cells[1].value), (std::vector<char>{'a', '\0', 'b'}));
}

TEST(DbTableRowValuesTest, MoveTakesTheCells)
{
    DbTableRowValues source = TextAndBytes();
    const DbTableColumnValue* const cells = source.cells.data();

    const DbTableRowValues target = std::move(source);

    EXPECT_EQ(target.cells.data(), cells);
    source.cells.push_back({DbTableColumnType::Integer, 0, 1});
    EXPECT_EQ(source.cells.size(), 1U);
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
    std::get<std::string>(copy.rows[1].cells[0].value).clear();
    copy.rows[0].cells.clear();

    ASSERT_EQ(data.rows.size(), 2U);
    EXPECT_EQ(data.rows[0].cells.size(), 2U);
    EXPECT_EQ(std::get<std::string>(data.rows[1].cells[0].value), LongText);
}

TEST(DbTableDataTest, MoveTakesTheRows)
{
    DbTableData source{{TextAndBytes()}};
    const DbTableRowValues* const rows = source.rows.data();

    DbTableData target;
    target = std::move(source);

    EXPECT_EQ(target.rows.data(), rows);
}

} // namespace

} // namespace Morvik::sql::tests
