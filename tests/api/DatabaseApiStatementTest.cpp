#include <cstdint>
#include <functional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "api/FacadeTest.h"
#include "support/NumberLocales.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// The texts of the statements that create a table, insert and update rows, also if a cell has no SQL text.

const DbTableColumnType IntegerColumn = DbTableColumnType::Integer;
const DbTableColumnType TextColumn = DbTableColumnType::Text;

struct StatementCase {
    const char* name;
    std::function<bool(DatabaseApi&)> run;
    std::string text;

    friend void PrintTo(const StatementCase& statement, std::ostream* stream) { *stream << statement.text; }
};

StatementCase Create(const char* name, DbTableDefinition definition, const std::string& text)
{
    return {name, [=](DatabaseApi& database) { return database.CreateTable(definition); },
            "CREATE TABLE IF NOT EXISTS " + text};
}

StatementCase Insert(const char* name, DbTableDataWrite data, const std::string& text, const std::string& table = "n")
{
    return {name, [=](DatabaseApi& database) { return database.WriteTableValues(table, data); }, "INSERT INTO " + text};
}

StatementCase Update(const char* name, DbTableDataWrite data, const std::string& condition, const std::string& text)
{
    return {name, [=](DatabaseApi& database) { return database.UpdateTableValues("n", data, condition); },
            "UPDATE " + text};
}

DbTableColumnValue ToCell(int number)
{
    return IntegerCell(number);
}

DbTableColumnValue ToCell(DbTableColumnValue cell)
{
    return cell;
}

/// A row of integers and other cells.
template <typename... Cells>
DbTableRowValues Row(Cells... cells)
{
    return {{ToCell(cells)...}};
}

const DbTableColumnValue Invalid = InvalidCell();
const DbTableColumnValue Now = TagCell(DbTableColumnType::DateTimeNow);

class DatabaseApiStatementTest : public FacadeTest, public testing::WithParamInterface<StatementCase> {};

TEST_P(DatabaseApiStatementTest, IsExecutedUnchangedAndLeavesSqlitesError)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE n (a, b, c)"));
    RawSqlite raw(":memory:");
    raw.Execute("CREATE TABLE n (a, b, c)");
    const RawFailure failure = FailureOfExec(raw.Handle(), GetParam().text);
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(GetParam().run(database), failure.code == 0);

    EXPECT_THAT(sqlite.Calls().front(), "sqlite3_exec(handle, " + GetParam().text + ", null, null)");
    EXPECT_THAT(sqlite.Executed(), ElementsAre(GetParam().text));
    EXPECT_THAT(database, HasErrorOf(failure));
}

INSTANTIATE_TEST_SUITE_P(
    Create, DatabaseApiStatementTest,
    testing::Values(
        Create("SensorLog",
               {"sensor_log",
                {{"id", IntegerColumn, 0, PrimaryKey, {{PrimaryKey, "AUTOINCREMENT"}}},
                 {"room", TextColumn, 0, NotNull},
                 {"value", DbTableColumnType::Real},
                 {"created", DbTableColumnType::DateTimeNow, 0, Default, {{Default, "(datetime('now'))"}}}},
                {{}, {'r'}, "", {}}},
               "sensor_log (id INTEGER PRIMARY KEY AUTOINCREMENT,room TEXT NOT NULL,value REAL "
               ",created TEXT DEFAULT (datetime('now')),UNIQUE (r) ON CONFLICT IGNORE)"),
        Create("ForeignKey", {"reading", {{"owner_id", IntegerColumn}}, {{}, {}, "owner", {"owner_id"}}},
               "reading (owner_id INTEGER ,FOREIGN KEY (owner_id) REFERENCES owner(owner_id) ON DELETE SET NULL ))"),
        Create("UnreferencedForeignKeyAfterAKey", {"m", {{"a", TextColumn}}, {{'a'}, {}, "", {"a"}}},
               "m (a TEXT ,PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY (a) ))"),
        Create("UnreferencedForeignKeyAlone", {"m", {{"a", TextColumn}}, {{}, {}, "", {"a"}}}, "m (a TEXT )"),
        Create("OneColumn", {"m", {{"a", TextColumn}}, {}}, "m (a TEXT )"),
        Create("TwoColumns", {"m", {{"a", TextColumn}, {"b", DbTableColumnType::Blob}}, {}}, "m (a TEXT ,b BLOB )"),
        Create("BothKeys", {"m", {{"a", TextColumn}, {"b", IntegerColumn}, {"c"}}, {{'a', 'b'}, {'c'}, "", {}}},
               "m (a TEXT ,b INTEGER ,c  ,PRIMARY KEY (a,b) ON CONFLICT IGNORE,UNIQUE (c) ON CONFLICT IGNORE)"),
        Create("NoColumns", {"m", {}, {}}, "m ()"),
        Create("NoColumnsButAKey", {"m", {}, {{'a'}, {}, "", {}}}, "m (,PRIMARY KEY (a) ON CONFLICT IGNORE)"),
        Create("KeyOfAnUnknownColumn", {"m", {{"a", TextColumn}}, {{'b'}, {}, "", {}}},
               "m (a TEXT ,PRIMARY KEY (b) ON CONFLICT IGNORE)"),
        Create("CheckWithoutItsParentheses", {"m", {{"a", IntegerColumn, 0, Check, {{Check, "a > 0"}}}}, {}},
               "m (a INTEGER CHECK a > 0)"),
        Create("NameWithABlank", {"two words", {{"a", TextColumn}}, {}}, "two words (a TEXT )"),
        Create("NameThatIsAKeyword", {"order", {{"a", TextColumn}}, {}}, "order (a TEXT )"),
        Create("NameWithAnApostrophe", {"it's", {{"a", TextColumn}}, {}}, "it's (a TEXT )"),
        Create("NameQuotedByTheCaller", {"\"two words\"", {{"\"order\"", TextColumn}}, {}},
               "\"two words\" (\"order\" TEXT )"),
        Create("NameWithItsSchema", {"main.m", {{"a", TextColumn}}, {}}, "main.m (a TEXT )")),
    [](const auto& statement) { return statement.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Insert, DatabaseApiStatementTest,
    testing::Values(
        Insert("TwoRows", {{"id", "name"}, {Row(1, TextCell("Ann")), Row(2, Now)}},
               R"(person (id,name) VALUES (1,"Ann") ,(2,datetime('now')))", "person"),
        Insert("ThreeRows", {{"a"}, {Row(1), Row(2), Row(3)}}, "n (a) VALUES (1) ,(2) ,(3)"),
        Insert("EveryKindOfCell",
               {{},
                {Row(DbTableColumnValue{DbTableColumnType::None, 0, -7}, 42, RealCell(3.14159265), TextCell("O'Brien"),
                     BlobCell("AB"), Now, TagCell(DbTableColumnType::DateTimeNowLocalTime),
                     TagCell(DbTableColumnType::UnixTimeNow), TagCell(DbTableColumnType::JulianDayNow))}},
               R"(n VALUES (-7,42,3.14159,"O''Brien","AB",datetime('now'),datetime('now','localtime'),)"
               R"(strftime('%s', 'now'),julianday('now')))"),
        Insert("NamesAsGiven", {{"a b", "order"}, {Row(1)}}, "main.my table (a b,order) VALUES (1)", "main.my table"),
        Insert("NoColumns", {{}, {Row(1, 2, 3)}}, "n VALUES (1,2,3)"),
        Insert("OnlyEmptyColumns", {{"", ""}, {Row(1)}}, "n VALUES (1)"),
        Insert("LeadingEmptyColumn", {{"", "a", "b"}, {Row(1)}}, "n (a,b) VALUES (1)"),
        Insert("LeadingEmptyColumns", {{"", "", "a"}, {Row(1)}}, "n (a) VALUES (1)"),
        Insert("InnerEmptyColumn", {{"a", "", "b"}, {Row(1)}}, "n (a,,b) VALUES (1)"),
        Insert("TrailingEmptyColumn", {{"a", ""}, {Row(1)}}, "n (a,) VALUES (1)"),
        Insert("EmptyColumnsEverywhere", {{"", "a", "", ""}, {Row(1)}}, "n (a,,) VALUES (1)"),
        Insert("NoRows", {{"a"}, {}}, "n (a) VALUES"), Insert("NothingAtAll", {}, "n VALUES"),
        Insert("RowWithoutCells", {{"a"}, {Row()}}, "n (a) VALUES ()"),
        Insert("RowWithoutCellsBetweenRows", {{"a"}, {Row(1), Row(), Row(2)}}, "n (a) VALUES (1) ,() ,(2)"),
        Insert("RowsOfDifferentLengths", {{"a", "b"}, {Row(1), Row(2, 3, 4)}}, "n (a,b) VALUES (1) ,(2,3,4)"),
        Insert("InvalidLastCell", {{"a", "b", "c"}, {Row(5, 6, Invalid)}}, "n (a,b,c) VALUES (5,6,)"),
        Insert("InvalidFirstCell", {{"a"}, {Row(Invalid, 6)}}, "n (a) VALUES ()"),
        Insert("InvalidInnerCellEndsItsRowOnly", {{"a"}, {Row(5, Invalid, 7), Row(8, 9)}}, "n (a) VALUES (5,) ,(8,9)"),
        Insert("EmptyTextIsAValidCell", {{"a"}, {Row(TextCell(""))}}, R"(n (a) VALUES (""))")),
    [](const auto& statement) { return statement.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Update, DatabaseApiStatementTest,
    testing::Values(Update("OneColumn", {{"a"}, {Row(1)}}, "WHERE a=2", "n SET (a)=(1) WHERE a=2"),
                    Update("NoCondition", {{"a"}, {Row(1)}}, "", "n SET (a)=(1) "),
                    Update("ConditionAsGiven", {{"a"}, {Row(1)}}, " where b ", "n SET (a)=(1)  where b "),
                    Update("LeadingEmptyColumn", {{"", "a"}, {Row(1)}}, "", "n SET (a)=(1) "),
                    Update("TwoRows", {{"a"}, {Row(1), Row(2)}}, "", "n SET (a)=(1) "),
                    Update("OnlyEmptyColumns", {{"", ""}, {Row(1)}}, "", "n SET=(1) "),
                    Update("InnerEmptyColumn", {{"a", "", "b"}, {Row(1)}}, "", "n SET (a,,b)=(1) "),
                    Update("TrailingEmptyColumn", {{"a", ""}, {Row(1)}}, "", "n SET (a,)=(1) "),
                    Update("NoRows", {{"a"}, {}}, "WHERE a=2", "n SET (a)=WHERE a=2"),
                    Update("FirstRowWithoutCells", {{"a"}, {Row(), Row(1)}}, "WHERE 1", "n SET (a)=WHERE 1"),
                    Update("NothingAfterTheSign", {{"a"}, {}}, "", "n SET (a)="),
                    Update("TooManyCells", {{"a"}, {Row(1, 2)}}, "", "n SET (a)=(1,2) "),
                    Update("TooFewCells", {{"a", "b"}, {Row(1)}}, "", "n SET (a,b)=(1) "),
                    Update("InvalidFirstCell", {{"a", "b"}, {Row(Invalid, 1)}}, "WHERE a=2", "n SET (a,b)=WHERE a=2"),
                    Update("InvalidLaterCell", {{"a", "b"}, {Row(1, Invalid, 2)}}, "WHERE a=2",
                           "n SET (a,b)=(1,) WHERE a=2")),
    [](const auto& statement) { return statement.param.name; });

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

TEST(DatabaseApiLongInsertTest, IsWrittenCompletelyWithNumbersOfAnyLength)
{
    constexpr int Count = 3000;
    DatabaseApi closed;
    DbTableDataWrite data;
    data.rows.assign(Count, Row(INT32_MIN, RealCell(-1.25e-300), TextCell("text")));
    for (const std::locale& locale : {std::locale::classic(), NumberLocales().at(1).locale}) {
        const ScopedGlobalLocale scope(locale);
        const SqliteCallRecorder sqlite;

        closed.WriteTableValues("t", data);

        EXPECT_THAT(sqlite.Executed(), ElementsAre(StreamedInsert(INT32_MIN, -1.25e-300, "text", Count)));
    }
}

class DatabaseApiInvalidCellTest : public FacadeTest {
protected:
    /// Writes rows, or updates a row, while SQLite accepts every text. Otherwise SQLite's error would replace the error
    /// about the cell.
    void ExpectError(const std::vector<DbTableRowValues>& rows, const std::string& position, bool update = false)
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_exec", 0, false);
        EXPECT_FALSE(update ? database.UpdateTableValues("t", {{"a"}, rows}, "WHERE a=2")
                            : database.WriteTableValues("t", {{"a"}, rows}));
        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)" + position));
    }
};

TEST_F(DatabaseApiInvalidCellTest, IsNamedByItsPositionAndColumn)
{
    ExpectError({Row(5, 6, Invalid)}, "2|0");
    ExpectError({Row(InvalidCell(7))}, "0|7");
    ExpectError({Row(InvalidCell(UINT32_MAX))}, "0|4294967295");
    ExpectError({Row(Invalid)}, "0|0", true);
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
        ExpectError({Row(1, cell)}, "1|3");
    }
}

TEST_F(DatabaseApiInvalidCellTest, FirstInvalidCellOfTheLastInvalidRowIsNamed)
{
    ExpectError({Row(1, InvalidCell(1), InvalidCell(2)), Row(InvalidCell(3), InvalidCell(4)),
                 Row(1, 1, InvalidCell(5), InvalidCell(6)), Row(1)},
                "2|5");
    ExpectError({Row(1, InvalidCell(9), InvalidCell(8)), Row(InvalidCell(7))}, "1|9", true);
}

TEST_F(DatabaseApiInvalidCellTest, NumbersOfTheMessageFollowTheProcessWideLocale)
{
    DbTableRowValues wide;
    wide.cells.assign(1234, IntegerCell(1));
    wide.cells.push_back(InvalidCell(UINT32_MAX));
    ExpectError({wide}, "1234|4294967295");

    const ScopedGlobalLocale locale;
    ExpectError({wide}, "1.234|4.294.967.295");
    ExpectError({wide}, "1.234|4.294.967.295", true);
}

TEST_F(DatabaseApiInvalidCellTest, CodeIsResetByTheNextSuccess)
{
    ExpectError({Row(Invalid)}, "0|0");
    EXPECT_TRUE(database.WriteTableValues("t", {{"a"}, {Row(1)}}));
    EXPECT_THAT(database, HasError(0, "Invalid column value: (row | column)0|0"));
}

TEST_F(DatabaseApiInvalidCellTest, NumberThatTheLocaleCannotWriteIsInvalid)
{
    const std::string prefix = "Invalid column value: (row | column)";
    for (const auto& [throws, message] : {std::pair(false, prefix + "|"), std::pair(true, prefix)}) {
        const ScopedGlobalLocale locale(std::locale(std::locale::classic(), new FixedNumbers("", throws)));

        EXPECT_FALSE(database.UpdateTableValues("other", {{"a"}, {Row(1)}}, "(a + 1)")) << "the cell is left out";

        EXPECT_THAT(database, HasError(112, message));
    }
    EXPECT_THAT(RawRows("SELECT a FROM other"), ElementsAre(ElementsAre("3"), ElementsAre("4")));
}

} // namespace

} // namespace Morvik::sql::tests
