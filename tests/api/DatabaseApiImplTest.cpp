#include "api/DatabaseApiImpl.h"

#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>

#include "support/Cells.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

// The implementation object is private to the facade, but an explicit instantiation may name private members.
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

    void ExpectError(int code, const std::string& message) const
    {
        EXPECT_EQ(implementation.code, code);
        EXPECT_EQ(implementation.message, message);
    }

    Implementation implementation;
    DbTableColumnValue cell{DbTableColumnType::Text, 7, std::string("earlier")};
};

TEST_F(DatabaseApiImplTest, CellThatCannotBeConvertedIsAnUntypedZero)
{
    SqliteCallRecorder sqlite;
    for (const auto& [function, result, message] : {std::tuple("sqlite3_column_value", 0, "No value exists."),
                                                    std::tuple("sqlite3_value_type", 6, "Unknown value type.")}) {
        cell = {DbTableColumnType::Text, 7, std::string("earlier")};
        sqlite.ReplaceNextResult(function, result, false);

        EXPECT_FALSE(implementation.GetColumnData(implementation.table, cell, 1));

        EXPECT_FALSE(sqlite.Pending());
        ExpectError(112, message);
        EXPECT_EQ(CellText(cell), "1:None int(0)");
    }
}

// At present, every definition renders to some text.
TEST_F(DatabaseApiImplTest, EmptyDefinitionTextIsRejected)
{
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(implementation.RunDefinition(""));

    ExpectError(112, "SQL statement is empty.");
    EXPECT_THAT(sqlite.Calls(), testing::IsEmpty());
}

TEST_F(DatabaseApiImplTest, CellIsConvertedAfterAnEarlierFailure)
{
    implementation.code = 5;

    EXPECT_FALSE(implementation.GetColumnData(implementation.table, cell, 1));

    ExpectError(5, "");
    EXPECT_EQ(CellText(cell), "1:Integer int(2)");
}

TEST_F(DatabaseApiImplTest, CellOfTheSameAlternativeIsUsedAgain)
{
    const std::string large(10000, 'x');
    const std::vector<char> largeBytes(10000, 'x');
    DbTableRowValues row;
    for (const decltype(cell.value)& value :
         std::vector<decltype(cell.value)>{1, 2.0, "old", large, std::vector<char>{'x'}, largeBytes, "old", large}) {
        row.cells.push_back({DbTableColumnType::Null, 9, value});
    }
    ASSERT_TRUE(implementation.OpenCursor("SELECT 7, 1.5, 'more than sixteen bytes', 'c', X'41', X'42', NULL, NULL"));
    ASSERT_TRUE(implementation.table.ReadNext());

    for (unsigned int column = 0; column < row.cells.size(); ++column) {
        EXPECT_TRUE(implementation.GetColumnData(implementation.table, row.cells[column], column));
    }

    EXPECT_THAT(CellTexts(row),
                testing::ElementsAre("0:Integer int(7)", "1:Real double(1.5)", "2:Text string(more than sixteen bytes)",
                                     "3:Text string(c)", "4:Blob bytes(41)", "5:Blob bytes(42)", "6:None string()",
                                     "7:None string()"));
}

} // namespace

} // namespace Morvik::sql::tests
