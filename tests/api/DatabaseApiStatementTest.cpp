#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "api/FacadeTest.h"
#include "support/NumberLocales.h"
#include "support/ReferenceFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// The texts of the statements that create a table, insert and update rows, also if a cell has no SQL text.

using enum DbTableColumnType;

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
const DbTableColumnValue Now = TagCell(DateTimeNow);

/// Checks that the operation passes exactly this text to SQLite and leaves SQLite's error. The database has a table n.
template <typename Run>
void ExpectStatement(const std::string& text, Run run)
{
    SCOPED_TRACE(text);
    RawSqlite raw(":memory:");
    raw.Execute("CREATE TABLE n (a, b, c)");
    const RawFailure failure = FailureOfExec(raw.Handle(), text);
    DatabaseApi database;
    ASSERT_TRUE(database.OpenDatabase(":memory:", false) && database.Execute("CREATE TABLE n (a, b, c)"));
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(run(database), failure.code == 0);

    EXPECT_THAT(sqlite.Calls().front(), "sqlite3_exec(handle, " + text + ", null, null)");
    EXPECT_THAT(sqlite.Executed(), ElementsAre(text));
    EXPECT_THAT(database, HasErrorOf(failure));
}

TEST(DatabaseApiStatementTest, CreateHasNameColumnsAndConstraintsAsGiven)
{
    const std::pair<DbTableDefinition, std::string> tables[] = {
        {{"sensor_log",
          {{"id", Integer, 0, PrimaryKey, {{PrimaryKey, "AUTOINCREMENT"}}},
           {"room", Text, 0, NotNull},
           {"value", Real},
           {"created", DateTimeNow, 0, Default, {{Default, "(datetime('now'))"}}}},
          {{}, {'r'}, "", {}}},
         "sensor_log (id INTEGER PRIMARY KEY AUTOINCREMENT,room TEXT NOT NULL,value REAL "
         ",created TEXT DEFAULT (datetime('now')),UNIQUE (r) ON CONFLICT IGNORE)"},
        {{"reading", {{"owner_id", Integer}}, {{}, {}, "owner", {"owner_id"}}},
         "reading (owner_id INTEGER ,FOREIGN KEY (owner_id) REFERENCES owner(owner_id) ON DELETE SET NULL ))"},
        {{"m", {{"a", Text}}, {{}, {}, "", {"a"}}}, "m (a TEXT )"},
        {{"m", {{"a", Text}}, {}}, "m (a TEXT )"},
        {{"m", {{"a", Text}, {"b", Blob}}, {}}, "m (a TEXT ,b BLOB )"},
        {{"m", {}, {}}, "m ()"},
        {{"m", {}, {{'a'}, {}, "", {}}}, "m (,PRIMARY KEY (a) ON CONFLICT IGNORE)"},
        {{"\"two words\"", {{"\"order\"", Text}}, {}}, "\"two words\" (\"order\" TEXT )"}};
    for (const auto& [table, text] : tables) {
        ExpectStatement("CREATE TABLE IF NOT EXISTS " + text,
                        [&, created = table](auto& database) { return database.CreateTable(created); });
    }
}

TEST(DatabaseApiStatementTest, InsertHasColumnsAndEveryRowUpToItsInvalidCell)
{
    const struct {
        std::string table;
        DbTableDataWrite data;
        std::string text;
    } inserts[] = {
        {"person",
         {{"id", "name"}, {Row(1, TextCell("Ann")), Row(2, Now)}},
         R"(person (id,name) VALUES (1,"Ann") ,(2,datetime('now')))"},
        {"n", {{"a"}, {Row(1), Row(2), Row(3)}}, "n (a) VALUES (1) ,(2) ,(3)"},
        {"n",
         {{},
          {Row(DbTableColumnValue{None, 8, -7}, 42, RealCell(3.14159265), TextCell("O'Brien"), BlobCell("AB"), Now,
               TagCell(DateTimeNowLocalTime), TagCell(UnixTimeNow), TagCell(JulianDayNow))}},
         R"(n VALUES (-7,42,3.14159,"O''Brien","AB",datetime('now'),datetime('now','localtime'),)"
         R"(strftime('%s', 'now'),julianday('now')))"},
        {"main.my table", {{"a b", "order"}, {Row(1)}}, "main.my table (a b,order) VALUES (1)"},
        {"\"n\"", {{"\"a\""}, {Row(1)}}, "\"n\" (\"a\") VALUES (1)"},
        {"n", {{}, {Row(1, 2, 3)}}, "n VALUES (1,2,3)"},
        // Empty names are left out before the first name that is not empty; later ones leave an empty place.
        {"n", {{"", ""}, {Row(1)}}, "n VALUES (1)"},
        {"n", {{"", "a", "b"}, {Row(1)}}, "n (a,b) VALUES (1)"},
        {"n", {{"", "", "a"}, {Row(1)}}, "n (a) VALUES (1)"},
        {"n", {{"a", "", "b"}, {Row(1)}}, "n (a,,b) VALUES (1)"},
        {"n", {{"a", ""}, {Row(1)}}, "n (a,) VALUES (1)"},
        {"n", {{"", "a", "", ""}, {Row(1)}}, "n (a,,) VALUES (1)"},
        // The numbers of rows and cells are not checked.
        {"n", {{"a"}, {}}, "n (a) VALUES"},
        {"n", {}, "n VALUES"},
        {"n", {{"a"}, {Row()}}, "n (a) VALUES ()"},
        {"n", {{"a"}, {Row(1), Row(), Row(2)}}, "n (a) VALUES (1) ,() ,(2)"},
        {"n", {{"a", "b"}, {Row(1), Row(2, 3, 4)}}, "n (a,b) VALUES (1) ,(2,3,4)"},
        // An invalid cell ends its row, and the statement is executed.
        {"n", {{"a", "b", "c"}, {Row(5, 6, Invalid)}}, "n (a,b,c) VALUES (5,6,)"},
        {"n", {{"a"}, {Row(Invalid, 6)}}, "n (a) VALUES ()"},
        {"n", {{"a"}, {Row(5, Invalid, 7), Row(8, 9)}}, "n (a) VALUES (5,) ,(8,9)"},
        {"n", {{"a"}, {Row(TextCell(""))}}, R"(n (a) VALUES (""))"}};
    for (const auto& insert : inserts) {
        ExpectStatement("INSERT INTO " + insert.text,
                        [&](auto& database) { return database.WriteTableValues(insert.table, insert.data); });
    }
}

TEST(DatabaseApiStatementTest, UpdateHasColumnsFirstRowAndCondition)
{
    const struct {
        DbTableDataWrite data;
        std::string condition;
        std::string text;
    } updates[] = {{{{"a"}, {Row(1)}}, "WHERE a=2", "n SET (a)=(1) WHERE a=2"},
                   {{{"a"}, {Row(1)}}, "", "n SET (a)=(1) "},
                   {{{"a"}, {Row(1)}}, " where b ", "n SET (a)=(1)  where b "},
                   {{{"", "a"}, {Row(1)}}, "", "n SET (a)=(1) "},
                   {{{"a"}, {Row(1), Row(2), Row(Invalid)}}, "", "n SET (a)=(1) "},
                   {{{"", ""}, {Row(1)}}, "", "n SET=(1) "},
                   {{{"a", "", "b"}, {Row(1)}}, "", "n SET (a,,b)=(1) "},
                   {{{"a", ""}, {Row(1)}}, "", "n SET (a,)=(1) "},
                   {{{"a"}, {}}, "WHERE a=2", "n SET (a)=WHERE a=2"},
                   {{{"a"}, {Row(), Row(1)}}, "WHERE 1", "n SET (a)=WHERE 1"},
                   {{{"a"}, {}}, "", "n SET (a)="},
                   {{{"a"}, {Row(1, 2)}}, "", "n SET (a)=(1,2) "},
                   {{{"a", "b"}, {Row(1)}}, "", "n SET (a,b)=(1) "},
                   {{{"a", "b"}, {Row(Invalid, 1)}}, "WHERE a=2", "n SET (a,b)=WHERE a=2"},
                   {{{"a", "b"}, {Row(1, Invalid, 2)}}, "WHERE a=2", "n SET (a,b)=(1,) WHERE a=2"}};
    for (const auto& update : updates) {
        ExpectStatement("UPDATE " + update.text,
                        [&](auto& database) { return database.UpdateTableValues("n", update.data, update.condition); });
    }
}

TEST(DatabaseApiStatementTest, LongInsertIsCompleteWithNumbersOfAnyLength)
{
    DbTableDataWrite data;
    data.rows.assign(3000, Row(INT32_MIN, RealCell(-1.25e-300), TextCell("text")));
    for (const std::locale& locale : {std::locale::classic(), NumberLocales().at(1).locale}) {
        const ScopedGlobalLocale scope(locale);
        const SqliteCallRecorder sqlite;

        DatabaseApi().WriteTableValues("t", data);
        ReferenceFacade().WriteTableValues("t", data);

        const std::vector<std::string> texts = sqlite.Executed();
        ASSERT_EQ(texts.size(), 2U);
        EXPECT_EQ(texts[0], texts[1]);
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
        EXPECT_THAT(update ? database.UpdateTableValues("t", {{"a"}, rows}, "WHERE a=2")
                           : database.WriteTableValues("t", {{"a"}, rows}),
                    FailedWith(112, "Invalid column value: (row | column)" + position));
        EXPECT_FALSE(sqlite.Pending());
    }
};

TEST_F(DatabaseApiInvalidCellTest, IsNamedByItsPositionAndColumn)
{
    ExpectError({Row(5, 6, Invalid)}, "2|0");
    ExpectError({Row(InvalidCell(7))}, "0|7");
    ExpectError({Row(InvalidCell(UINT32_MAX))}, "0|4294967295");
    ExpectError({Row(Invalid)}, "0|0", true);
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

TEST_F(DatabaseApiInvalidCellTest, NumberThatTheLocaleCannotWriteIsInvalid)
{
    const std::string prefix = "Invalid column value: (row | column)";
    for (const auto& [throws, message] : {std::pair(false, prefix + "|"), std::pair(true, prefix)}) {
        const ScopedGlobalLocale locale(std::locale(std::locale::classic(), new FixedNumbers("", throws)));

        EXPECT_THAT(database.UpdateTableValues("other", {{"a"}, {Row(1)}}, "(a + 1)"), FailedWith(112, message))
            << "the cell is left out";
    }
    EXPECT_THAT(RawRows("SELECT a FROM other"), ElementsAre(ElementsAre("3"), ElementsAre("4")));
}

} // namespace

} // namespace Morvik::sql::tests
