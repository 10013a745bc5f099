#include <gmock/gmock.h>

#include <new>
#include <string>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

/// A column that cannot be converted: the SQLite function that fails, the value that it returns, and the code that
/// fetching the row leaves.
struct FailureCase {
    const char* name;
    const char* function;
    int result;
    const char* message;
};

class DatabaseApiFailedConversionTest : public OpenFacade, public testing::WithParamInterface<FailureCase> {
protected:
    DatabaseApiFailedConversionTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 10), (2, 20), (3, 30)"));
    }

    DbTableData data;
    DbTableRowValues row;
};

TEST_P(DatabaseApiFailedConversionTest, WholeReadKeepsTheRowsBeforeItAndEndsWithTheStepsRecord)
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult(GetParam().function, GetParam().result, false, 3);

    EXPECT_FALSE(database.ReadValues("SELECT a, b FROM t", data));

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(database, HasError(100, ""));
    EXPECT_FALSE(database.Succeeded());
    EXPECT_TRUE(database.Failed());
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)", "1:Integer int(10)")));
    EXPECT_EQ(sqlite.CallsOf("sqlite3_step").size(), 2U);
}

TEST_P(DatabaseApiFailedConversionTest, SingleRowKeepsTheCellsBeforeItAndTheMessage)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult(GetParam().function, GetParam().result, false, 1);

    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(database, HasError(112, GetParam().message));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(1)"));
}

TEST_P(DatabaseApiFailedConversionTest, LaterRowKeepsTheCellsBeforeItToo)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
    ASSERT_TRUE(database.ReadNextRow(row));
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult(GetParam().function, GetParam().result, false, 1);

    EXPECT_FALSE(database.ReadNextRow(row));

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(database, HasError(112, GetParam().message));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)"));
}

TEST_P(DatabaseApiFailedConversionTest, BeginReturnsTheEndWithTheMessage)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a, b FROM t"));
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult(GetParam().function, GetParam().result, false);

    EXPECT_EQ(database.begin(), database.end());

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(database, HasError(112, GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(Columns, DatabaseApiFailedConversionTest,
                         testing::Values(FailureCase{"NoValue", "sqlite3_column_value", 0, "No value exists."},
                                         FailureCase{"NegativeType", "sqlite3_value_type", -1, "No value exists."},
                                         FailureCase{"TypeZero", "sqlite3_value_type", 0, "Unknown value type."},
                                         FailureCase{"TypeSix", "sqlite3_value_type", 6, "Unknown value type."},
                                         FailureCase{"TypeNine", "sqlite3_value_type", 9, "Unknown value type."}),
                         [](const auto& failureCase) { return failureCase.param.name; });

// SQLite has no memory for a text.
class DatabaseApiLostTextTest : public OpenFacade {
protected:
    const std::string sql = "SELECT 1, 'a' UNION ALL SELECT 2, 'b'";
    DbTableData data;
    DbTableRowValues row;
};

TEST_F(DatabaseApiLostTextTest, ReadThrowsAndKeepsTheRowsBeforeIt)
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_value_text", 0, false, 1);

    EXPECT_THROW(database.ReadValues(sql, data), std::bad_alloc);

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)", "1:Text string(a)")));
}

TEST_F(DatabaseApiLostTextTest, RowThrowsAndKeepsTheCellsBeforeIt)
{
    ASSERT_TRUE(database.SqlQueryBegin(sql));
    ASSERT_TRUE(database.ReadNextRow(row));
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_value_text", 0, false);

    EXPECT_THROW(database.ReadNextRow(row), std::bad_alloc);

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)"));
}

} // namespace

} // namespace Morvik::sql::tests
