#include "api/DatabaseApiImpl.h"

#include <gmock/gmock.h>

#include <string>
#include <type_traits>
#include <variant>

#include <sqlite3.h>

#include "support/RecordedSqlite.h"

namespace Morvik::sql::tests {

namespace {

// The implementation object is private to the facade; an explicit instantiation may name it all the same.
template <auto Member>
struct Granted {
    friend auto ImplementationOf(DatabaseApi& facade) { return (facade.*Member).get(); }
};
auto ImplementationOf(DatabaseApi& facade);
template struct Granted<&DatabaseApi::m_impl>;

using Implementation = std::remove_pointer_t<decltype(ImplementationOf(std::declval<DatabaseApi&>()))>;

class DatabaseApiImplTest : public testing::Test {
protected:
    DatabaseApiImplTest()
    {
        EXPECT_TRUE(implementation.database.Open(":memory:", false));
        EXPECT_TRUE(implementation.OpenCursor("SELECT 1, 2"));
        EXPECT_TRUE(implementation.table.ReadNext());
    }

    // Converts the second column while `function` answers `result` once.
    void ConvertWith(const std::string& function, int result)
    {
        RecordedSqlite sqlite;
        sqlite.ReplaceNextResult(function, result, false);
        EXPECT_FALSE(implementation.GetColumnData(implementation.table, cell, 1));
        EXPECT_FALSE(sqlite.Pending());
    }

    Implementation implementation;
    DbTableColumnValue cell{DbTableColumnType::Text, 7, std::string("earlier")};
};

TEST_F(DatabaseApiImplTest, CellWithoutAnyValueIsAnUntypedZero)
{
    ConvertWith("sqlite3_column_value", 0);

    EXPECT_EQ(implementation.code, 112);
    EXPECT_EQ(implementation.message, "No value exists.");
    EXPECT_EQ(cell.type, DbTableColumnType::None);
    EXPECT_EQ(cell.column, 1U);
    EXPECT_EQ(std::get<int>(cell.value), 0);
}

TEST_F(DatabaseApiImplTest, CellOfAnUnknownTypeIsAnUntypedZero)
{
    ConvertWith("sqlite3_value_type", 6);

    EXPECT_EQ(implementation.code, 112);
    EXPECT_EQ(implementation.message, "Unknown value type.");
    EXPECT_EQ(cell.type, DbTableColumnType::None);
    EXPECT_EQ(cell.column, 1U);
    EXPECT_EQ(std::get<int>(cell.value), 0);
}

// No definition is turned into nothing today.
TEST_F(DatabaseApiImplTest, EmptyTextOfADefinitionIsMissing)
{
    const RecordedSqlite sqlite;

    EXPECT_FALSE(implementation.RunDefinition(""));

    EXPECT_EQ(implementation.code, 112);
    EXPECT_EQ(implementation.message, "SQL statement is empty.");
    EXPECT_THAT(sqlite.Calls(), testing::IsEmpty());
}

TEST_F(DatabaseApiImplTest, CellIsConvertedThoughAnEarlierCodeStands)
{
    implementation.code = 5;

    EXPECT_FALSE(implementation.GetColumnData(implementation.table, cell, 1));

    EXPECT_EQ(implementation.code, 5);
    EXPECT_EQ(cell.type, DbTableColumnType::Integer);
    EXPECT_EQ(std::get<int>(cell.value), 2);
}

} // namespace

} // namespace Morvik::sql::tests
