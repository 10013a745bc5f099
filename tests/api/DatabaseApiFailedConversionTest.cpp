#include <new>
#include <string>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

/// A column that cannot be converted: the SQLite function that fails, the value that it returns, and the message that
/// fetching the row leaves.
struct FailedConversion {
    const char* name;
    const char* function;
    int result;
    const char* message;
};

class DatabaseApiFailedConversionTest : public FacadeTest, public testing::WithParamInterface<FailedConversion> {
protected:
    /// Checks that `act` fails with the code and message if the conversion fails after `converted` converted columns.
    template <typename Act>
    void ExpectFailure(int converted, int code, const std::string& message, Act act)
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(GetParam().function, GetParam().result, false, converted);
        EXPECT_FALSE(act());
        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(database, HasError(code, message));
        EXPECT_FALSE(database.Succeeded());
        EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), static_cast<std::size_t>(converted / 2 + 1));
    }
};

TEST_P(DatabaseApiFailedConversionTest, CompleteReadKeepsEarlierRowsAndReturnsTheStepsCode)
{
    ExpectFailure(3, 100, "", [&] { return database.ReadValues("SELECT a, b FROM t", data); });
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)", "1:Text string(one)")));
}

TEST_P(DatabaseApiFailedConversionTest, FetchKeepsEarlierCellsAndTheMessage)
{
    for (const std::size_t cells : {0, 2}) { // as in a first and in a later row
        row.cells.assign(cells, TextCell("old"));
        ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
        ExpectFailure(1, 112, GetParam().message, [&] { return database.ReadNextRow(row); });
        EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(1)"));
    }
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
    ExpectFailure(0, 112, GetParam().message, [&] { return database.begin() != database.end(); });
}

INSTANTIATE_TEST_SUITE_P(Columns, DatabaseApiFailedConversionTest,
                         testing::Values(FailedConversion{"NoValue", "sqlite3_column_value", 0, "No value exists."},
                                         FailedConversion{"NegativeType", "sqlite3_value_type", -1, "No value exists."},
                                         FailedConversion{"TypeZero", "sqlite3_value_type", 0, "Unknown value type."},
                                         FailedConversion{"TypeSix", "sqlite3_value_type", 6, "Unknown value type."},
                                         FailedConversion{"TypeNine", "sqlite3_value_type", 9, "Unknown value type."}),
                         [](const auto& failed) { return failed.param.name; });

/// SQLite has no memory for the text of the second row.
class DatabaseApiLostTextTest : public FacadeTest {
protected:
    DatabaseApiLostTextTest() { sqlite.ReplaceNextResult("sqlite3_value_text", 0, false, 1); }
    ~DatabaseApiLostTextTest() override { EXPECT_FALSE(sqlite.Pending()); }

    SqliteCallRecorder sqlite;
};

TEST_F(DatabaseApiLostTextTest, ReadThrowsAndKeepsEarlierRows)
{
    EXPECT_THROW(database.ReadValues("SELECT a, b FROM t", data), std::bad_alloc);
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)", "1:Text string(one)")));
}

TEST_F(DatabaseApiLostTextTest, RowThrowsAndKeepsEarlierCells)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_THROW(database.ReadNextRow(row), std::bad_alloc);

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)"));
}

} // namespace

} // namespace Morvik::sql::tests
