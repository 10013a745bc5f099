#include <string>
#include <utility>
#include <vector>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

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
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(CellsOf(sql), cells);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare(handle, " + sql + ", -1)", "sqlite3_step()",
                                            "sqlite3_column_count()", "sqlite3_column_value(0)", "sqlite3_value_type()",
                                            "sqlite3_value_int()", "sqlite3_column_value(1)", "sqlite3_value_type()",
                                            "sqlite3_value_double()", "sqlite3_column_value(2)", "sqlite3_value_type()",
                                            "sqlite3_value_text()", "sqlite3_column_value(3)", "sqlite3_value_type()",
                                            "sqlite3_value_bytes()", "sqlite3_value_blob()", "sqlite3_column_value(4)",
                                            "sqlite3_value_type()", "sqlite3_step()"));

    EXPECT_TRUE(database.SqlQueryBegin(sql));
    EXPECT_THAT(NextRow(), cells);
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
    const std::string large(5000, '0'); // so long that its buffer is released
    const std::vector<std::pair<std::string, std::string>> values{
        {"7", "Integer int(7)"},
        {"1.5", "Real double(1.5)"},
        {"'a longer text'", "Text string(a longer text)"},
        {"'a'", "Text string(a)"},
        {"'" + large + "'", "Text string(" + large + ")"},
        {"X'414243444546'", "Blob bytes(414243444546)"},
        {"X'00'", "Blob bytes(00)"},
        {"X'41'", "Blob bytes(41)"},
        {"zeroblob(5000)", "Blob bytes(" + large + large + ")"},
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

} // namespace

} // namespace Morvik::sql::tests
