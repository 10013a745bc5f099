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
TEST_F(DatabaseApiImplTest, EmptyTextOfADefinitionIsMissing)
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

} // namespace

} // namespace Morvik::sql::tests
