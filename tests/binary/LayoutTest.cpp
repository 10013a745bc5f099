// Programs are compiled with the layout of the public types. If a size or an order changes, every program that is not
// compiled again breaks.
#include <sql/DatabaseApi.h>
#include <sql/DbTableData.h>
#include <sql/DbTableDataWrite.h>
#include <sql/DbTableDefinition.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>
#include <sql/SqlValue.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "binary/ObjectBytes.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t Word = sizeof(void*);

#if defined(__x86_64__) || defined(__arm__)
// Sizes on the target and on a 64-bit machine.
constexpr bool HasSize(std::size_t size, std::size_t onTarget, std::size_t on64Bits)
{
    return size == (Word == 4 ? onTarget : on64Bits);
}

static_assert(HasSize(sizeof(DbTableColumnValue), 40, 48));
static_assert(HasSize(sizeof(DbTableRowValues), 12, 24));
static_assert(HasSize(sizeof(DbTableData), 12, 24));
static_assert(HasSize(sizeof(DbTableDataWrite), 24, 48));
static_assert(HasSize(sizeof(DbTableColumnDefinition), 60, 96));
static_assert(HasSize(sizeof(DbTableConstraints), 60, 104));
static_assert(HasSize(sizeof(DbTableDefinition), 96, 160));
static_assert(HasSize(sizeof(SqlError), 28, 40));
static_assert(HasSize(sizeof(SqlValue), 32, 48));
static_assert(HasSize(sizeof(DbTableRowIterator), 16, 32));
#endif

// A class with private state is one pointer to that state. The facade also has the current row.
static_assert(sizeof(SqlDatabase) == Word);
static_assert(sizeof(SqlCommand) == Word);
static_assert(sizeof(SqlTable) == Word);
static_assert(sizeof(IDatabaseApi) == Word);
static_assert(sizeof(DatabaseApi) == 2 * Word + sizeof(DbTableRowValues));

static_assert(std::is_same_v<std::underlying_type_t<DbTableColumnType>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<DbTableColumnConstraint>, std::uint32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnValue::column), std::uint32_t>);
static_assert(
    std::is_same_v<decltype(DbTableColumnValue::value), std::variant<int, double, std::string, std::vector<char>>>);
static_assert(std::is_same_v<decltype(DbTableColumnDefinition::reserved), std::int32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnDefinition::constraintFlags), std::uint32_t>);

// Some of the types hold standard containers that do not have standard layout; offsetof works with these compilers
// anyway.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(offsetof(DbTableColumnValue, type) == 0);
static_assert(offsetof(DbTableColumnValue, column) == 4);
static_assert(offsetof(DbTableColumnValue, value) == 8);

static_assert(offsetof(DbTableRowValues, cells) == 0);
static_assert(offsetof(DbTableData, rows) == 0);
static_assert(offsetof(DbTableDataWrite, columns) == 0);
static_assert(offsetof(DbTableDataWrite, rows) == sizeof(std::vector<std::string>));

static_assert(offsetof(DbTableColumnDefinition, name) == 0);
static_assert(offsetof(DbTableColumnDefinition, type) == sizeof(std::string));
static_assert(offsetof(DbTableColumnDefinition, reserved) == sizeof(std::string) + 4);
static_assert(offsetof(DbTableColumnDefinition, constraintFlags) == sizeof(std::string) + 8);
static_assert(offsetof(DbTableColumnDefinition, constraintArguments) == sizeof(std::string) + (Word == 4 ? 12 : 16));

static_assert(offsetof(DbTableConstraints, primaryKey) == 0);
static_assert(offsetof(DbTableConstraints, unique) == sizeof(std::vector<char>));
static_assert(offsetof(DbTableConstraints, referenceTable) == 2 * sizeof(std::vector<char>));
static_assert(offsetof(DbTableConstraints, foreignKey) == 2 * sizeof(std::vector<char>) + sizeof(std::string));

static_assert(offsetof(DbTableDefinition, name) == 0);
static_assert(offsetof(DbTableDefinition, columns) == sizeof(std::string));
static_assert(offsetof(DbTableDefinition, constraints) == sizeof(std::string) + sizeof(std::vector<int>));

TEST(LayoutTest, RecordIsTheCodeAndThenTheMessage)
{
    SqlError error;
    error.SetError(77);

    EXPECT_EQ(ReadAt<std::int32_t>(&error, 0), 77);
    EXPECT_EQ(OffsetIn(&error, error.GetLastErrorMsg()), Word);
    EXPECT_EQ(sizeof(SqlError), Word + sizeof(std::string));
}

TEST(LayoutTest, ValueIsARecordAndThenTheWrappedInstance)
{
    int instance = 0;
    const SqlValue value(reinterpret_cast<sqlite3_value*>(&instance));

    EXPECT_EQ(OffsetIn(&value, static_cast<const SqlError&>(value)), 0);
    EXPECT_EQ(ReadAt<const void*>(&value, sizeof(SqlError)), &instance);
}

// An iterator is its facade, its position, its row and an unused word.
void ExpectIterator(const DbTableRowIterator& iterator, const void* facade, std::int32_t position, const void* row)
{
    EXPECT_EQ(ReadAt<const void*>(&iterator, 0), facade);
    EXPECT_EQ(ReadAt<std::int32_t>(&iterator, Word), position);
    EXPECT_EQ(ReadAt<const void*>(&iterator, 2 * Word), row);
    EXPECT_EQ(ReadAt<std::uintptr_t>(&iterator, 3 * Word), 0U);
}

TEST(LayoutTest, FacadeEndsInTheRowThatIteratorsPointAt)
{
    DatabaseApi facade;
    ASSERT_TRUE(facade.OpenDatabase(":memory:", false));
    ASSERT_TRUE(facade.SqlQueryBegin("SELECT 1"));

    DbTableRowIterator iterator = facade.begin();

    EXPECT_EQ(OffsetIn(&facade, *iterator), 2 * Word);
    ExpectIterator(iterator, &facade, 0, &*iterator);
    ExpectIterator(facade.end(), &facade, -1, nullptr);

    ++iterator;

    ExpectIterator(iterator, &facade, -1, nullptr);
}

TEST(LayoutTest, IteratorOfNoFacadeIsAtTheEnd)
{
    ExpectIterator({}, nullptr, -1, nullptr);
}

} // namespace

} // namespace Morvik::sql::tests
