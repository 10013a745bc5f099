#include "api/DatabaseApiImpl.h"

#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
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
        EXPECT_TRUE(implementation.OpenCursor("SELECT 7, 1.5, 'text', X'41', NULL"));
        EXPECT_TRUE(implementation.table.ReadNext());
    }

    void ExpectError(int code, const std::string& message) const
    {
        EXPECT_EQ(implementation.code, code);
        EXPECT_EQ(implementation.message, message);
    }

    Implementation implementation;
};

TEST_F(DatabaseApiImplTest, CellThatCannotBeConvertedIsAnUntypedZero)
{
    SqliteCallRecorder sqlite;
    for (const auto& [function, result, message] : {std::tuple("sqlite3_column_value", 0, "No value exists."),
                                                    std::tuple("sqlite3_value_type", 6, "Unknown value type.")}) {
        DbTableColumnValue cell{DbTableColumnType::Text, 7, std::string("earlier")};
        sqlite.ReplaceNextResult(function, result, false);

        EXPECT_FALSE(implementation.GetColumnData(implementation.table, cell, 1));

        EXPECT_FALSE(sqlite.Pending());
        ExpectError(112, message);
        EXPECT_EQ(CellText(cell), "1:None int(0)");
    }
}

// No definition renders to an empty text, so the test passes one directly.
TEST_F(DatabaseApiImplTest, EmptyDefinitionTextIsRejected)
{
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(implementation.RunDefinition(""));

    ExpectError(112, "SQL statement is empty.");
    EXPECT_THAT(sqlite.Calls(), testing::IsEmpty());
}

TEST_F(DatabaseApiImplTest, CellIsConvertedAlsoAfterAnEarlierFailure)
{
    const std::vector<DbTableColumnValue> empty(5);
    const std::vector<DbTableColumnValue> old{IntegerCell(1), RealCell(2), TextCell("old"), BlobCell("old"),
                                              TextCell("")};
    for (const auto& [earlier, cells] : {std::pair(0, empty), std::pair(5, old)}) {
        DbTableRowValues row{cells};
        implementation.code = earlier;

        for (unsigned int column = 0; column < row.cells.size(); ++column) {
            EXPECT_EQ(implementation.GetColumnData(implementation.table, row.cells[column], column), earlier == 0);
        }

        ExpectError(earlier, "");
        EXPECT_THAT(CellTexts(row), testing::ElementsAre("0:Integer int(7)", "1:Real double(1.5)",
                                                         "2:Text string(text)", "3:Blob bytes(41)", "4:None string()"));
    }
}

} // namespace

} // namespace Morvik::sql::tests
