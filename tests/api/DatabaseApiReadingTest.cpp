#include <sqlite3.h>

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

class DatabaseApiReadingTest : public FacadeTest {
protected:
    /// Checks that a read of the table or query fails as raw SQLite fails to compile the query, and adds no row.
    void ExpectRejectedTable(const std::string& table)
    {
        const RawFailure failure = RejectedQuery("SELECT * FROM " + table);
        EXPECT_FALSE(database.ReadTableValues(table, data));
        EXPECT_THAT(database, HasErrorOf(failure));
        EXPECT_THAT(CellTexts(data), ElementsAre(kept));
    }

    DatabaseApiReadingTest() { data.rows = {{{TextCell("kept")}}}; }

    const std::vector<std::string> kept{"0:Text string(kept)"};
    const std::vector<std::string> one{"0:Integer int(1)"};
    const std::vector<std::string> two{"0:Integer int(2)"};
};

TEST_F(DatabaseApiReadingTest, AppendsEveryRowInOrder)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.ReadValues("SELECT a, b FROM t WHERE a < 3 ORDER BY a DESC", data));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.ReadValues("SELECT a FROM other", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(kept, ElementsAre("0:Integer int(2)", "1:Text string(two)"),
                                             ElementsAre("0:Integer int(1)", "1:Text string(one)"), one, two));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesUsesTheNameUnchanged)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadTableValues("other", data));
    EXPECT_TRUE(database.ReadTableValues("other WHERE a=2", data));

    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, SELECT * FROM other, -1)",
                            "sqlite3_prepare(handle, SELECT * FROM other WHERE a=2, -1)"));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two, two));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesDoesNotQuoteAndRejectsEmptyNames)
{
    ASSERT_TRUE(database.Execute("ALTER TABLE other RENAME TO \"my table\""));

    ExpectRejectedTable("my table");
    ExpectRejectedTable("");
    EXPECT_EQ(database.GetLastError(), SQLITE_ERROR);

    EXPECT_TRUE(database.ReadTableValues("\"my table\"", data));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two));
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

TEST_F(DatabaseApiReadingTest, NoRowsAreASuccess)
{
    for (const char* sql : {"SELECT a FROM t WHERE 0", "-- nothing"}) {
        FailWithMissingCommand();
        EXPECT_TRUE(database.ReadValues(sql, data));
        EXPECT_THAT(database, HasError(0, ""));
    }
    EXPECT_TRUE(database.CloseDatabase()) << "a text without a statement holds none";
    EXPECT_THAT(CellTexts(data), ElementsAre(kept));
}

TEST_F(DatabaseApiReadingTest, MissingTextIsRejectedAndReleasesTheEarlierStatement)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1 WHERE 0", data));
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.ReadValues("", data));

    EXPECT_THAT(database, HasError(112, "Missing query SQL statement."));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept));
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiReadingTest, FailedStepKeepsEarlierRowsAndTheNextReadSucceeds)
{
    const std::string sql = "SELECT abs(iif(a = 3, -9223372036854775808, a)) FROM t";
    const RawWalk raw = LegacyWalk(RawSqlite(path).Handle(), sql);
    ASSERT_EQ(raw.rows, 2);
    ASSERT_NE(raw.step.code, SQLITE_DONE);

    EXPECT_FALSE(database.ReadValues(sql, data));
    EXPECT_THAT(database, HasErrorOf(raw.step));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two));

    EXPECT_TRUE(database.ReadValues("SELECT 1", data));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two, one));
}

TEST_F(DatabaseApiReadingTest, StatementOfAReadIsReleasedByTheNextOne)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1 WHERE 0", data));
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadValues("SELECT 2 WHERE 0", data));

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)",
                                            "sqlite3_prepare(handle, SELECT 2 WHERE 0, -1)", "sqlite3_step()"));
}

// How the columns of a row become cells, both when all rows are read at once and row by row.

class DatabaseApiConversionTest : public FacadeTest {
protected:
    /// The cells of the only row of a query.
    std::vector<std::string> CellsOf(const std::string& sql)
    {
        data.rows.clear();
        EXPECT_TRUE(database.ReadValues(sql, data));
        return CellTexts(data.rows.at(0));
    }
};

TEST_F(DatabaseApiConversionTest, StorageClassChoosesTagAndAlternativeOfEachCell)
{
    const std::string sql = "SELECT 7, 1.5, 'text', X'410042', NULL";
    const auto cells = ElementsAre("0:Integer int(7)", "1:Real double(1.5)", "2:Text string(text)",
                                   "3:Blob bytes(410042)", "4:None string()");
    {
        const SqliteCallRecorder sqlite;
        EXPECT_THAT(CellsOf(sql), cells);
        EXPECT_THAT(sqlite.Calls(),
                    ElementsAre("sqlite3_prepare(handle, " + sql + ", -1)", "sqlite3_step()", "sqlite3_column_count()",
                                "sqlite3_column_value(0)", "sqlite3_value_type()", "sqlite3_value_int()",
                                "sqlite3_column_value(1)", "sqlite3_value_type()", "sqlite3_value_double()",
                                "sqlite3_column_value(2)", "sqlite3_value_type()", "sqlite3_value_text()",
                                "sqlite3_column_value(3)", "sqlite3_value_type()", "sqlite3_value_bytes()",
                                "sqlite3_value_blob()", "sqlite3_column_value(4)", "sqlite3_value_type()",
                                "sqlite3_step()"));
    }
    EXPECT_TRUE(database.SqlQueryBegin(sql));
    EXPECT_THAT(NextRow(), cells);
}

TEST_F(DatabaseApiConversionTest, DeclaredTypesDoNotMatter)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE n (a INTEGER, b TEXT, c); INSERT INTO n VALUES ('text', X'00', 1e3)"));
    EXPECT_THAT(CellsOf("SELECT * FROM n"),
                ElementsAre("0:Text string(text)", "1:Blob bytes(00)", "2:Real double(1000)"));
}

TEST_F(DatabaseApiConversionTest, IntegersKeepTheirLow32Bits)
{
    EXPECT_THAT(CellsOf("SELECT 2147483647, -2147483648, 2147483648, 4294967295, 4294967296, 5000000000, "
                        "-9223372036854775808"),
                ElementsAre("0:Integer int(2147483647)", "1:Integer int(-2147483648)", "2:Integer int(-2147483648)",
                            "3:Integer int(-1)", "4:Integer int(0)", "5:Integer int(705032704)", "6:Integer int(0)"));
}

TEST_F(DatabaseApiConversionTest, RealsKeepEveryBit)
{
    EXPECT_THAT(CellsOf("SELECT 0.1, 1e308 * 10, -0.0, 9007199254740993.0, 5e-324"),
                ElementsAre("0:Real double(0.1)", "1:Real double(inf)", testing::_, "3:Real double(9007199254740992)",
                            "4:Real double(5e-324)"));
}

TEST_F(DatabaseApiConversionTest, TextEndsAtAZeroByteUnlikeABlob)
{
    EXPECT_THAT(CellsOf("SELECT CAST(X'610062' AS TEXT), X'610062', CAST(X'00' AS TEXT), X'00', '', X'', X'FF80'"),
                ElementsAre("0:Text string(a)", "1:Blob bytes(610062)", "2:Text string()", "3:Blob bytes(00)",
                            "4:Text string()", "5:Blob bytes()", "6:Blob bytes(FF80)"));
}

TEST_F(DatabaseApiConversionTest, RowHasNothingOfTheEarlierRow)
{
    const std::vector<std::pair<std::string, std::string>> values{{"7", "Integer int(7)"},
                                                                  {"1.5", "Real double(1.5)"},
                                                                  {"'a longer text'", "Text string(a longer text)"},
                                                                  {"'a'", "Text string(a)"},
                                                                  {"X'414243444546'", "Blob bytes(414243444546)"},
                                                                  {"X'00'", "Blob bytes(00)"},
                                                                  {"''", "Text string()"},
                                                                  {"X''", "Blob bytes()"},
                                                                  {"NULL", "None string()"}};
    for (const auto& [before, beforeText] : values) {
        for (const auto& [after, afterText] : values) {
            ASSERT_TRUE(database.SqlQueryBegin("SELECT " + before + " UNION ALL SELECT " + after));

            EXPECT_THAT(NextRow(), ElementsAre("0:" + beforeText));
            EXPECT_THAT(NextRow(), ElementsAre("0:" + afterText)) << "after " << before;
        }
    }
}

TEST_F(DatabaseApiConversionTest, RowHasNothingOfTheCallersEarlierCells)
{
    row.cells = {{DbTableColumnType::JulianDayNow, 77, std::string("old")},
                 {DbTableColumnType::Blob, 78, std::vector<char>{'x'}},
                 {DbTableColumnType::Null, 79, 5},
                 {DbTableColumnType::Text, 80, 6}};
    ASSERT_TRUE(database.SqlQueryBegin("SELECT NULL, NULL, 'new', 4"));

    EXPECT_THAT(NextRow(), ElementsAre("0:None string()", "1:None string()", "2:Text string(new)", "3:Integer int(4)"));
}

TEST_F(DatabaseApiConversionTest, StatementWithoutColumnsYieldsNoRows)
{
    EXPECT_TRUE(database.ReadValues("CREATE TABLE made (a)", data));
    EXPECT_TRUE(data.rows.empty());
    EXPECT_EQ(RawRows("SELECT * FROM pragma_table_info('made')").size(), 1U);
}

TEST_F(DatabaseApiConversionTest, TwoThousandColumnsAreCountedInOrder)
{
    std::string sql = "SELECT 0";
    std::vector<std::string> expected{"0:Integer int(0)"};
    for (int column = 1; column < 2000; ++column) {
        const std::string number = std::to_string(column);
        sql += "," + number;
        expected.push_back(number + ":Integer int(" + number + ")");
    }

    EXPECT_EQ(CellsOf(sql), expected);
}

TEST_F(DatabaseApiConversionTest, TextIsReadAsUtf8)
{
    const std::string text = "gr\u00FCn \u20AC \U0001F600";
    for (const std::string encoding : {"UTF-8", "UTF-16le", "UTF-16be"}) {
        DatabaseApi encoded;
        DbTableData read;
        ASSERT_TRUE(encoded.OpenDatabase(directory.File(encoding), false));
        ASSERT_TRUE(encoded.Execute("PRAGMA encoding = '" + encoding + "'; CREATE TABLE n (a)"));
        ASSERT_TRUE(encoded.WriteTableValues("n", {{"a"}, {{{TextCell(text)}}}}));

        EXPECT_TRUE(encoded.ReadTableValues("n", read));
        EXPECT_TRUE(encoded.ReadValues("PRAGMA encoding", read));

        EXPECT_THAT(CellTexts(read), ElementsAre(ElementsAre("0:Text string(" + text + ")"),
                                                 ElementsAre("0:Text string(" + encoding + ")")));
    }
}

TEST_F(DatabaseApiReadingTest, RowHasMemoryForItsCellsOnly)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1, 2, 3", data));

    EXPECT_EQ(data.rows.back().cells.capacity(), 3U);
}

// An SQL function that makes the facade fail while the facade fetches a row.
DatabaseApi* failing = nullptr;

int AddFailingFunction(sqlite3* connection, const char**, const sqlite3_api_routines*)
{
    return sqlite3_create_function(
        connection, "fails", 0, SQLITE_UTF8, nullptr,
        [](sqlite3_context*, int, sqlite3_value**) { failing->Execute(""); }, nullptr, nullptr);
}

TEST_F(DatabaseApiReadingTest, FailureWithinAStepReadsOneColumn)
{
    ASSERT_EQ(sqlite3_auto_extension(reinterpret_cast<void (*)()>(AddFailingFunction)), SQLITE_OK);
    DatabaseApi other;
    failing = &other;
    ASSERT_TRUE(other.OpenDatabase(":memory:", false));
    sqlite3_reset_auto_extension();
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(other.ReadValues("SELECT fails(), 2", data));

    EXPECT_EQ(sqlite.CallsOf("sqlite3_column_value"), std::vector<std::string>{"sqlite3_column_value(0)"});
    EXPECT_THAT(other, HasError(100, ""));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept));
}

} // namespace

} // namespace Morvik::sql::tests
