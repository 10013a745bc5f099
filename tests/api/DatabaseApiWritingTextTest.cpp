#include <gmock/gmock.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "support/Cells.h"
#include "support/NumberLocales.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// The text of an insert, also if a cell has no SQL text.

struct WritingTextCase {
    const char* name;
    std::string table;
    DbTableDataWrite data;
    std::string text;
    bool accepted = false;
};

const std::vector<WritingTextCase> TextCases{
    {"TwoRows",
     "person",
     {{"id", "name"},
      {{{IntegerCell(1), TextCell("Ann")}}, {{IntegerCell(2), TagCell(DbTableColumnType::DateTimeNow)}}}},
     R"(INSERT INTO person (id,name) VALUES (1,"Ann") ,(2,datetime('now')))"},
    {"ThreeRows",
     "t",
     {{"a"}, {{{IntegerCell(1)}}, {{IntegerCell(2)}}, {{IntegerCell(3)}}}},
     "INSERT INTO t (a) VALUES (1) ,(2) ,(3)",
     true},
    {"EveryKindOfCell",
     "t",
     {{},
      {{{{DbTableColumnType::None, 0, -7},
         IntegerCell(42),
         RealCell(3.14159265),
         TextCell("O'Brien"),
         BlobCell("AB"),
         TagCell(DbTableColumnType::DateTimeNow),
         TagCell(DbTableColumnType::DateTimeNowLocalTime),
         TagCell(DbTableColumnType::UnixTimeNow),
         TagCell(DbTableColumnType::JulianDayNow)}}}},
     R"(INSERT INTO t VALUES (-7,42,3.14159,"O''Brien","AB",datetime('now'),datetime('now','localtime'),)"
     R"(strftime('%s', 'now'),julianday('now')))"},
    {"NamesAsGiven",
     "main.my table",
     {{"a b", "order"}, {{{IntegerCell(1)}}}},
     "INSERT INTO main.my table (a b,order) VALUES (1)"},
    {"NoColumns", "t", {{}, {{{IntegerCell(1)}}}}, "INSERT INTO t VALUES (1)"},
    {"OnlyEmptyColumns", "t", {{"", ""}, {{{IntegerCell(1)}}}}, "INSERT INTO t VALUES (1)"},
    {"LeadingEmptyColumn", "t", {{"", "a", "b"}, {{{IntegerCell(1)}}}}, "INSERT INTO t (a,b) VALUES (1)"},
    {"LeadingEmptyColumns", "t", {{"", "", "a"}, {{{IntegerCell(1)}}}}, "INSERT INTO t (a) VALUES (1)", true},
    {"InnerEmptyColumn", "t", {{"a", "", "b"}, {{{IntegerCell(1)}}}}, "INSERT INTO t (a,,b) VALUES (1)"},
    {"TrailingEmptyColumn", "t", {{"a", ""}, {{{IntegerCell(1)}}}}, "INSERT INTO t (a,) VALUES (1)"},
    {"EmptyColumnsEverywhere", "t", {{"", "a", "", ""}, {{{IntegerCell(1)}}}}, "INSERT INTO t (a,,) VALUES (1)"},
    {"NoRows", "t", {{"a"}, {}}, "INSERT INTO t (a) VALUES"},
    {"NothingAtAll", "t", {}, "INSERT INTO t VALUES"},
    {"RowWithoutCells", "t", {{"a"}, {{}}}, "INSERT INTO t (a) VALUES ()"},
    {"RowWithoutCellsBetweenRows",
     "t",
     {{"a"}, {{{IntegerCell(1)}}, {}, {{IntegerCell(2)}}}},
     "INSERT INTO t (a) VALUES (1) ,() ,(2)"},
    {"RowsOfDifferentLengths",
     "t",
     {{"a", "b"}, {{{IntegerCell(1)}}, {{IntegerCell(2), IntegerCell(3), IntegerCell(4)}}}},
     "INSERT INTO t (a,b) VALUES (1) ,(2,3,4)"},
    {"InvalidLastCell",
     "t",
     {{"a", "b", "c"}, {{{IntegerCell(5), IntegerCell(6), InvalidCell()}}}},
     "INSERT INTO t (a,b,c) VALUES (5,6,)"},
    {"InvalidFirstCell", "t", {{"a"}, {{{InvalidCell(), IntegerCell(6)}}}}, "INSERT INTO t (a) VALUES ()"},
    {"InvalidInnerCellEndsItsRowOnly",
     "t",
     {{"a"}, {{{IntegerCell(5), InvalidCell(), IntegerCell(7)}}, {{IntegerCell(8), IntegerCell(9)}}}},
     "INSERT INTO t (a) VALUES (5,) ,(8,9)"},
    {"EmptyTextIsAValidCell", "t", {{"a"}, {{{TextCell("")}}}}, R"(INSERT INTO t (a) VALUES (""))", true}};

class DatabaseApiInsertTextTest : public OpenFacade, public testing::WithParamInterface<WritingTextCase> {};

TEST_P(DatabaseApiInsertTextTest, IsExecutedAsItStandsAndLeavesSqlitesRecord)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE t (a, b, c)"));
    const RawFailure plain = FailureOfExec(RawSqlite(path).Handle(), GetParam().text);
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(database.WriteTableValues(GetParam().table, GetParam().data), GetParam().accepted);

    EXPECT_THAT(sqlite.Executed(), ElementsAre(GetParam().text));
    EXPECT_THAT(database, HasError(plain.code, plain.message));
}

INSTANTIATE_TEST_SUITE_P(Requests, DatabaseApiInsertTextTest, testing::ValuesIn(TextCases),
                         [](const auto& textCase) { return textCase.param.name; });

/// The text of an insert of the row, `count` times, written by a stream with the current locale.
std::string StreamedInsert(int integer, double real, const std::string& text, int count)
{
    std::ostringstream stream;
    stream << "INSERT INTO t VALUES";
    for (int row = 0; row < count; ++row) {
        stream << (row == 0 ? " (" : " ,(") << integer << ',' << real << ",\"" << text << "\")";
    }
    return stream.str();
}

TEST(DatabaseApiLongInsertTest, IsWrittenWholeHoweverLongItsNumbersAre)
{
    constexpr int Count = 3000;
    DatabaseApi closed;
    DbTableDataWrite data;
    data.rows.assign(Count, {{IntegerCell(INT32_MIN), RealCell(-1.25e-300), TextCell("text")}});
    {
        const SqliteCallRecorder sqlite;

        closed.WriteTableValues("t", data);

        EXPECT_EQ(sqlite.Executed().at(0), StreamedInsert(INT32_MIN, -1.25e-300, "text", Count));
    }
    const ScopedGlobalLocale locale;
    const SqliteCallRecorder sqlite;

    closed.WriteTableValues("t", data);

    const std::string text = sqlite.Executed().at(0);
    EXPECT_EQ(text, StreamedInsert(INT32_MIN, -1.25e-300, "text", Count));
    EXPECT_THAT(text, testing::StartsWith("INSERT INTO t VALUES (-2.147.483.648,-1,25e-300,\"text\") ,("));
}

class DatabaseApiInvalidCellTest : public OpenFacade {
protected:
    /// Writes rows while SQLite accepts every text, because only then the facade's error about a cell stays in the
    /// record.
    void WriteAccepted(const std::vector<DbTableRowValues>& rows)
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_exec", 0, false);
        EXPECT_FALSE(database.WriteTableValues("t", {{"a"}, rows}));
        EXPECT_FALSE(sqlite.Pending());
    }
};

TEST_F(DatabaseApiInvalidCellTest, IsNamedByItsPositionAndItsOwnColumn)
{
    WriteAccepted({{{IntegerCell(5), IntegerCell(6), InvalidCell()}}});
    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)2|0"));

    WriteAccepted({{{InvalidCell(7)}}});
    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)0|7"));

    WriteAccepted({{{InvalidCell(UINT32_MAX)}}});
    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)0|4294967295"));
}

TEST_F(DatabaseApiInvalidCellTest, EveryCellWithoutATextIsInvalid)
{
    const std::vector<DbTableColumnValue> cells{{DbTableColumnType::Null, 3, 5},
                                                {DbTableColumnType::None, 3, std::string()},
                                                {DbTableColumnType::Integer, 3, 1.5},
                                                {DbTableColumnType::Real, 3, 1},
                                                {DbTableColumnType::Text, 3, std::vector<char>()},
                                                {DbTableColumnType::Blob, 3, std::string()},
                                                {static_cast<DbTableColumnType>(10), 3, 1},
                                                {static_cast<DbTableColumnType>(-1), 3, 1}};
    for (const DbTableColumnValue& cell : cells) {
        FailWithMissingCommand();

        WriteAccepted({{{IntegerCell(1), cell}}});

        EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)1|3"));
    }
}

TEST_F(DatabaseApiInvalidCellTest, TheFirstOfARowAndTheLastOfAllRowsWins)
{
    WriteAccepted({{{IntegerCell(1), InvalidCell(1), InvalidCell(2)}},
                   {{InvalidCell(3), InvalidCell(4)}},
                   {{IntegerCell(1), IntegerCell(1), InvalidCell(5), InvalidCell(6)}},
                   {{IntegerCell(1)}}});

    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)2|5"));
}

TEST_F(DatabaseApiInvalidCellTest, NumbersOfTheMessageFollowTheProcessWideLocale)
{
    DbTableRowValues row;
    row.cells.assign(1234, IntegerCell(1));
    row.cells.push_back(InvalidCell(UINT32_MAX));
    WriteAccepted({row});
    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)1234|4294967295"));

    const ScopedGlobalLocale locale;
    WriteAccepted({row});
    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)1.234|4.294.967.295"));
}

TEST_F(DatabaseApiInvalidCellTest, IsForgottenByTheNextSuccess)
{
    WriteAccepted({{{InvalidCell()}}});

    EXPECT_TRUE(database.Execute("CREATE TABLE t (a)"));
    EXPECT_TRUE(database.WriteTableValues("t", {{"a"}, {{{IntegerCell(1)}}}}));

    EXPECT_THAT(database, HasError(0, "Invalid column value: (row | column)0|0"));
}

} // namespace

} // namespace Morvik::sql::tests
