#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// How the columns of a row become cells, both when all rows are read at once and row by row.

class DatabaseApiConversionTest : public OpenFacade {
protected:
    DbTableData data;
    DbTableRowValues row;
};

TEST_F(DatabaseApiConversionTest, StorageClassChoosesTagAndAlternative)
{
    const std::string sql = "SELECT 7, 1.5, 'text', X'410042', NULL";

    EXPECT_TRUE(database.ReadValues(sql, data));
    EXPECT_TRUE(database.SqlQueryBegin(sql));
    EXPECT_TRUE(database.ReadNextRow(row));

    const auto cells = ElementsAre("0:Integer int(7)", "1:Real double(1.5)", "2:Text string(text)",
                                   "3:Blob bytes(410042)", "4:None string()");
    EXPECT_THAT(CellTexts(data), ElementsAre(cells));
    EXPECT_THAT(CellTexts(row), cells);
}

TEST_F(DatabaseApiConversionTest, ColumnsAreReadInOrderEachByTheGetterOfItsStorageClass)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadValues("SELECT 7, 1.5, 'text', X'41', NULL", data));

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare(handle, SELECT 7, 1.5, 'text', X'41', NULL, -1)",
                                            "sqlite3_step()", "sqlite3_column_count()", "sqlite3_column_value(0)",
                                            "sqlite3_value_type()", "sqlite3_value_int()", "sqlite3_column_value(1)",
                                            "sqlite3_value_type()", "sqlite3_value_double()", "sqlite3_column_value(2)",
                                            "sqlite3_value_type()", "sqlite3_value_text()", "sqlite3_column_value(3)",
                                            "sqlite3_value_type()", "sqlite3_value_bytes()", "sqlite3_value_blob()",
                                            "sqlite3_column_value(4)", "sqlite3_value_type()", "sqlite3_step()"));
}

TEST_F(DatabaseApiConversionTest, DeclaredTypesDoNotMatter)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE t (a INTEGER, b TEXT, c); INSERT INTO t VALUES ('text', X'00', 1e3)"));

    EXPECT_TRUE(database.ReadTableValues("t", data));

    EXPECT_THAT(CellTexts(data),
                ElementsAre(ElementsAre("0:Text string(text)", "1:Blob bytes(00)", "2:Real double(1000)")));
}

TEST_F(DatabaseApiConversionTest, IntegersKeepTheirLow32Bits)
{
    EXPECT_TRUE(database.ReadValues("SELECT 2147483647, -2147483648, 2147483648, 4294967295, 4294967296, 5000000000, "
                                    "-9223372036854775808",
                                    data));

    EXPECT_THAT(CellTexts(data),
                ElementsAre(ElementsAre("0:Integer int(2147483647)", "1:Integer int(-2147483648)",
                                        "2:Integer int(-2147483648)", "3:Integer int(-1)", "4:Integer int(0)",
                                        "5:Integer int(705032704)", "6:Integer int(0)")));
}

TEST_F(DatabaseApiConversionTest, RealsKeepEveryBit)
{
    EXPECT_TRUE(database.ReadValues("SELECT 0.1, 1e308 * 10, -0.0, 9007199254740993.0, 5e-324", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Real double(0.1)", "1:Real double(inf)", testing::_,
                                                         "3:Real double(9007199254740992)", "4:Real double(5e-324)")));
}

TEST_F(DatabaseApiConversionTest, NullIsAnEmptyTextTaggedNoneAndNoInteger)
{
    EXPECT_TRUE(database.ReadValues("SELECT NULL", data));

    const DbTableColumnValue& cell = data.rows.at(0).cells.at(0);
    EXPECT_EQ(cell.type, DbTableColumnType::None);
    EXPECT_EQ(std::get<std::string>(cell.value), "");
    EXPECT_THROW(static_cast<void>(std::get<int>(cell.value)), std::bad_variant_access);
}

TEST_F(DatabaseApiConversionTest, TextEndsAtItsFirstZeroByteAndABlobDoesNot)
{
    EXPECT_TRUE(database.ReadValues(
        "SELECT CAST(X'610062' AS TEXT), X'610062', CAST(X'00' AS TEXT), X'00', '', X'', X'FF80'", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(a)", "1:Blob bytes(610062)", "2:Text string()",
                                                         "3:Blob bytes(00)", "4:Text string()", "5:Blob bytes()",
                                                         "6:Blob bytes(FF80)")));
}

TEST_F(DatabaseApiConversionTest, NothingOfTheRowBeforeShowsInTheNextOne)
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

            EXPECT_TRUE(database.ReadNextRow(row));
            EXPECT_THAT(CellTexts(row), ElementsAre("0:" + beforeText));
            EXPECT_TRUE(database.ReadNextRow(row));
            EXPECT_THAT(CellTexts(row), ElementsAre("0:" + afterText)) << "after " << before;
        }
    }
}

TEST_F(DatabaseApiConversionTest, NothingOfTheCallersOwnCellsShowsInARow)
{
    row.cells = {{DbTableColumnType::JulianDayNow, 77, std::string("old")},
                 {DbTableColumnType::Blob, 78, std::vector<char>{'x'}},
                 {DbTableColumnType::Null, 79, 5}};
    ASSERT_TRUE(database.SqlQueryBegin("SELECT NULL, NULL, 'new', 4"));

    EXPECT_TRUE(database.ReadNextRow(row));

    EXPECT_THAT(CellTexts(row),
                ElementsAre("0:None string()", "1:None string()", "2:Text string(new)", "3:Integer int(4)"));
}

TEST_F(DatabaseApiConversionTest, BufferMuchLargerThanTheNextValueIsNotKept)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT hex(zeroblob(5000)), zeroblob(10000), hex(zeroblob(5000)) "
                                       "UNION ALL SELECT 'a', X'41', NULL"));
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_TRUE(database.ReadNextRow(row));

    EXPECT_THAT(CellTexts(row), ElementsAre("0:Text string(a)", "1:Blob bytes(41)", "2:None string()"));
    EXPECT_LT(std::get<std::string>(row.cells[0].value).capacity(), 100U);
    EXPECT_LT(std::get<std::vector<char>>(row.cells[1].value).capacity(), 100U);
    EXPECT_LT(std::get<std::string>(row.cells[2].value).capacity(), 100U);
}

TEST_F(DatabaseApiConversionTest, StatementWithoutColumnsYieldsNoRows)
{
    EXPECT_TRUE(database.ReadValues("CREATE TABLE made (a)", data));

    EXPECT_THAT(data.rows, IsEmpty());
    EXPECT_EQ(PlainRows("SELECT name FROM sqlite_master").size(), 1U);
}

TEST_F(DatabaseApiConversionTest, TwoThousandColumnsAreCountedInOrder)
{
    std::string sql = "SELECT 0";
    for (int column = 1; column < 2000; ++column) {
        sql += "," + std::to_string(column);
    }

    EXPECT_TRUE(database.ReadValues(sql, data));

    const std::vector<std::string> cells = CellTexts(data.rows.at(0));
    ASSERT_EQ(cells.size(), 2000U);
    for (std::size_t column = 0; column < cells.size(); ++column) {
        const std::string number = std::to_string(column);
        EXPECT_EQ(cells[column], number + ":Integer int(" + number + ")");
    }
}

class DatabaseApiEncodingTest : public testing::TestWithParam<const char*> {};

TEST_P(DatabaseApiEncodingTest, TextIsReadAsUtf8)
{
    const std::string text = "gr\u00FCn \u20AC \U0001F600";
    const TemporaryDirectory directory;
    DatabaseApi database;
    DbTableData data;
    ASSERT_TRUE(database.OpenDatabase(directory.File("a.db"), false));
    ASSERT_TRUE(database.Execute(std::string("PRAGMA encoding = '") + GetParam() + "'; CREATE TABLE t (a)"));
    ASSERT_TRUE(database.WriteTableValues("t", {{"a"}, {{{TextCell(text)}}}}));

    EXPECT_TRUE(database.ReadTableValues("t", data));
    EXPECT_TRUE(database.ReadValues("PRAGMA encoding", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(" + text + ")"),
                                             ElementsAre(std::string("0:Text string(") + GetParam() + ")")));
}

INSTANTIATE_TEST_SUITE_P(Encodings, DatabaseApiEncodingTest, testing::Values("UTF-8", "UTF-16le", "UTF-16be"),
                         [](const auto& encoding) {
                             std::string name = encoding.param;
                             std::erase(name, '-');
                             return name;
                         });

} // namespace

} // namespace Morvik::sql::tests
