#include <cstddef>
#include <new>
#include <string>
#include <vector>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// Reading all rows at once, and the failures of a row's conversion.

class DatabaseApiReadingTest : public FacadeTest {
protected:
    DatabaseApiReadingTest() { data.rows = {{{TextCell("kept")}}}; }

    const std::vector<std::string> kept{"0:Text string(kept)"};
    const std::vector<std::string> one{"0:Integer int(1)"};
    const std::vector<std::string> two{"0:Integer int(2)"};
};

TEST_F(DatabaseApiReadingTest, AppendsEveryRowInOrder)
{
    EXPECT_TRUE(database.ReadValues("SELECT a, b FROM t WHERE a < 3 ORDER BY a DESC", data));
    EXPECT_TRUE(database.ReadValues("SELECT a FROM other", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(kept, ElementsAre("0:Integer int(2)", "1:Text string(two)"),
                                             ElementsAre("0:Integer int(1)", "1:Text string(one)"), one, two));
}

TEST_F(DatabaseApiReadingTest, SuccessLeavesNoMessage)
{
    for (const char* sql : {"SELECT a FROM t", "SELECT a FROM t WHERE 0", "-- nothing"}) {
        FailWithMissingCommand();
        EXPECT_THAT(database.ReadValues(sql, data), Succeeded());
    }
    EXPECT_TRUE(database.CloseDatabase()) << "a text without a statement holds none";
    EXPECT_EQ(data.rows.size(), 4U);
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesUsesTheNameUnchanged)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE \"my table\" (a); INSERT INTO \"my table\" VALUES (2)"));
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadTableValues("other", data));
    EXPECT_TRUE(database.ReadTableValues("\"my table\"", data));
    EXPECT_FALSE(database.ReadTableValues("my table", data));
    EXPECT_FALSE(database.ReadTableValues("", data));

    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, SELECT * FROM other, -1)",
                            "sqlite3_prepare(handle, SELECT * FROM \"my table\", -1)",
                            "sqlite3_prepare(handle, SELECT * FROM my table, -1)",
                            "sqlite3_prepare(handle, SELECT * FROM , -1)"));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two, two));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesIgnoresAnOverrideOfReadValues)
{
    class Overriding : public DatabaseApi {
    public:
        bool ReadValues(const std::string&, DbTableData&) const override { return false; }
    };
    Overriding overriding;
    ASSERT_TRUE(overriding.OpenDatabase(path, true));

    EXPECT_TRUE(overriding.ReadTableValues("other", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two));
}

TEST_F(DatabaseApiReadingTest, StatementOfAReadIsReleasedByTheNextOne)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1 WHERE 0", data));
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadValues("SELECT 2 WHERE 0", data));
    EXPECT_FALSE(database.ReadValues("", data));

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_finalize(statement)", "sqlite3_prepare(handle, SELECT 2 WHERE 0, -1)",
                            "sqlite3_step()", "sqlite3_finalize(statement)"));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept));
}

TEST_F(DatabaseApiReadingTest, FailedStepKeepsEarlierRowsAndTheNextReadSucceeds)
{
    const std::string sql = "SELECT abs(iif(a = 3, -9223372036854775808, a)) FROM t";

    EXPECT_THAT(database.ReadValues(sql, data), FailedWith(LegacyWalk(RawSqlite(path).Handle(), sql).step));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two));

    EXPECT_THAT(database.ReadValues("SELECT 1", data), Succeeded());
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two, one));
}

TEST_F(DatabaseApiReadingTest, RowHasMemoryForItsCellsOnly)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1, 2, 3", data));

    EXPECT_EQ(data.rows.back().cells.capacity(), 3U);
}

// An SQL function that makes the facade fail while the facade fetches a row.
DatabaseApi* failingFacade = nullptr;

int AddFailingFunction(sqlite3* connection, const char**, const sqlite3_api_routines*)
{
    return sqlite3_create_function(
        connection, "fails", 0, SQLITE_UTF8, nullptr,
        [](sqlite3_context*, int, sqlite3_value**) { failingFacade->Execute(""); }, nullptr, nullptr);
}

TEST_F(DatabaseApiReadingTest, FailureWithinAStepReadsOneColumn)
{
    ASSERT_EQ(sqlite3_auto_extension(reinterpret_cast<void (*)()>(AddFailingFunction)), SQLITE_OK);
    DatabaseApi other;
    failingFacade = &other;
    ASSERT_TRUE(other.OpenDatabase(":memory:", false));
    sqlite3_reset_auto_extension();
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(other.ReadValues("SELECT fails(), 2", data));

    EXPECT_EQ(sqlite.CallsOf("sqlite3_column_value"), std::vector<std::string>{"sqlite3_column_value(0)"});
    EXPECT_THAT(other, HasError(100, ""));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept));
}

/// Results of SQLite functions that prevent the conversion of a column, and the message after the row is fetched.
const struct {
    const char* function;
    int value;
    const char* message;
} FailedConversions[] = {{"sqlite3_column_value", 0, "No value exists."},
                         {"sqlite3_value_type", -1, "No value exists."},
                         {"sqlite3_value_type", 0, "Unknown value type."},
                         {"sqlite3_value_type", 6, "Unknown value type."},
                         {"sqlite3_value_type", 9, "Unknown value type."}};

TEST_F(DatabaseApiReadingTest, FailedConversionKeepsEarlierRowsAndReturnsTheStepsCode)
{
    for (const auto& [function, value, message] : FailedConversions) {
        SCOPED_TRACE(function + std::to_string(value));
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(function, value, false, 3);
        data.rows.clear();

        EXPECT_THAT(database.ReadValues("SELECT a, b FROM t", data), FailedWith(100, ""));

        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)", "1:Text string(one)")));
        EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 2U);
    }
}

TEST_F(DatabaseApiReadingTest, FailedConversionKeepsEarlierCellsOfAFetchedRow)
{
    for (const auto& [function, value, message] : FailedConversions) {
        for (const std::size_t cells : {0, 2}) { // as in a first and in a later row
            SCOPED_TRACE(function + std::to_string(value));
            row.cells.assign(cells, TextCell("old"));
            ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
            SqliteCallRecorder sqlite;
            sqlite.ReplaceNextResult(function, value, false, 1);

            EXPECT_THAT(database.ReadNextRow(row), FailedWith(112, message));

            EXPECT_FALSE(sqlite.Pending());
            EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(1)"));
        }
    }
}

TEST_F(DatabaseApiReadingTest, TextWithoutMemoryThrowsAndKeepsEarlierRowsAndCells)
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_value_text", 0, false, 1);
    EXPECT_THROW(database.ReadValues("SELECT a, b FROM t", data), std::bad_alloc);
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, ElementsAre("0:Integer int(1)", "1:Text string(one)")));

    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
    sqlite.ReplaceNextResult("sqlite3_value_text", 0, false);
    EXPECT_THROW(database.ReadNextRow(row), std::bad_alloc);
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(1)"));

    EXPECT_FALSE(sqlite.Pending());
}

} // namespace

} // namespace Morvik::sql::tests
