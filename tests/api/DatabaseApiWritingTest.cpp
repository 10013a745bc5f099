#include <cstddef>
#include <string>
#include <utility>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/DoubleQuotedTexts.h"
#include "support/OomInjector.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

#ifdef TKOSQLLITE_SQLITE_WITHOUT_DQS
// All connections of this program accept double-quoted texts, because most tests write some. An application can do the
// same.
const DoubleQuotedTexts AcceptedByDefault(true);

TEST(DoubleQuotedTexts, SqliteIsBuiltWithoutDoubleQuotedTexts)
{
    EXPECT_EQ(sqlite3_compileoption_used("DQS=0"), 1);
}
#endif

class DatabaseApiWritingTest : public FacadeTest {
protected:
    DatabaseApiWritingTest() { EXPECT_TRUE(database.Execute("CREATE TABLE n (a, b)")); }

    bool Write(const DbTableColumnValue& cell) { return database.WriteTableValues("n", {{"a"}, {{{cell}}}}); }

    std::vector<std::vector<std::string>> Written() const { return RawRows("SELECT a, b FROM n"); }
};

TEST_F(DatabaseApiWritingTest, InsertsEveryRowInOrderWithOneCall)
{
    const DbTableDataWrite rows{{"b", "a"}, {{{IntegerCell(1), RealCell(1.5)}}, {{TextCell("two"), IntegerCell(2)}}}};
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.WriteTableValues("n", rows), Succeeded());

    EXPECT_EQ(sqlite.Calls().size(), 1U);
    EXPECT_THAT(Written(), ElementsAre(ElementsAre("1.5", "1"), ElementsAre("2", "'two'")));
}

TEST_F(DatabaseApiWritingTest, TextIsStoredWithItsApostrophesDoubled)
{
    EXPECT_TRUE(Write(TextCell("O'Brien")));
    EXPECT_TRUE(Write(TextCell("say \"hi\"")));
    EXPECT_TRUE(Write(TextCell("a"))) << "the name of a column";
    EXPECT_TRUE(Write(TextCell("A\"); DROP TABLE n; --")));

    EXPECT_THAT(RawRows("SELECT a FROM n"), ElementsAre(ElementsAre("'O''''Brien'"), ElementsAre("'say \"hi\"'"),
                                                        ElementsAre("'a'"), ElementsAre("'A\"); DROP TABLE n; --'")));
}

TEST_F(DatabaseApiWritingTest, BlobIsStoredAsTextAndAQuoteEndsItsLiteral)
{
    EXPECT_TRUE(Write(BlobCell("AB")));
    EXPECT_FALSE(Write(BlobCell("A\"B")));
    EXPECT_EQ(database.GetLastError(), SQLITE_ERROR);
    EXPECT_THAT(RawRows("SELECT a FROM n"), ElementsAre(ElementsAre("'AB'")));

    EXPECT_TRUE(Write(BlobCell("A\"); DROP TABLE n; --")));
    EXPECT_THAT(RawRows("SELECT name FROM sqlite_master WHERE name = 'n'"), IsEmpty());
}

TEST_F(DatabaseApiWritingTest, TimesAreComputedBySqlite)
{
    const DbTableDataWrite times{
        {"a", "b"},
        {{{TagCell(DbTableColumnType::DateTimeNow), TagCell(DbTableColumnType::JulianDayNow)}},
         {{TagCell(DbTableColumnType::DateTimeNowLocalTime), TagCell(DbTableColumnType::UnixTimeNow)}}}};
    const std::string withinAnHour = "SELECT abs(julianday(a) - julianday('now')) < 0.05, typeof(b), "
                                     "abs(b - julianday('now')) < 0.05 FROM n WHERE rowid = 1";
    const std::string localWithinAnHour = "SELECT abs(julianday(a) - julianday('now', 'localtime')) < 0.05, typeof(b), "
                                          "abs(b - strftime('%s', 'now')) < 3600 FROM n WHERE rowid = 2";

    EXPECT_TRUE(database.WriteTableValues("n", times));

    EXPECT_THAT(RawRows(withinAnHour), ElementsAre(ElementsAre("1", "'real'", "1")));
    EXPECT_THAT(RawRows(localWithinAnHour), ElementsAre(ElementsAre("1", "'text'", "1")));
}

class DatabaseApiUpdatingTest : public FacadeTest {
protected:
    DatabaseApiUpdatingTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE person (id, name, age);"
                                     "INSERT INTO person VALUES (3, 'Ann', 30), (4, 'Eve', 40)"));
    }

    bool Update(const std::string& column, const DbTableColumnValue& cell, const std::string& condition = "WHERE id=3")
    {
        return database.UpdateTableValues("person", {{column}, {{{cell}}}}, condition);
    }

    std::vector<std::vector<std::string>> Persons() const { return RawRows("SELECT name, age FROM person"); }

    const std::vector<std::string> ann{"'Ann'", "30"};
    const std::vector<std::string> eve{"'Eve'", "40"};
};

TEST_F(DatabaseApiUpdatingTest, AssignsAllColumnsOfTheSelectedRowsWithOneStatement)
{
    const DbTableDataWrite bob{{"name", "age"}, {{{TextCell("Bob"), IntegerCell(42)}}}};
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.UpdateTableValues("person", bob, "WHERE id=3"), Succeeded());

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre(R"(sqlite3_exec(handle, UPDATE person SET (name,age)=("Bob",42) WHERE id=3, null, null))"));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("'Bob'", "42"), eve));
}

TEST_F(DatabaseApiUpdatingTest, ChangesTheRowsThatTheConditionSelects)
{
    EXPECT_THAT(Update("age", IntegerCell(1), "WHERE id=5"), Succeeded());
    EXPECT_THAT(Persons(), ElementsAre(ann, eve));

    EXPECT_TRUE(Update("age", IntegerCell(1), ""));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("'Ann'", "1"), ElementsAre("'Eve'", "1")));
}

TEST_F(DatabaseApiUpdatingTest, TextEqualToAColumnNameAssignsThatColumn)
{
    EXPECT_TRUE(Update("name", TextCell("age")));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("30", "30"), eve));
}

TEST_F(DatabaseApiUpdatingTest, TextIsStoredWithItsApostrophesDoubled)
{
    EXPECT_TRUE(Update("name", TextCell("O'Brien")));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("'O''''Brien'", "30"), eve));
}

// A SQLite that was built with SQLITE_DQS=0, as its developers recommend, rejects the double quotation marks around
// texts and blobs. An application can enable them for every connection that it opens.
class DatabaseApiDoubleQuotedTextsTest : public DatabaseApiUpdatingTest {
protected:
    void Reopen() { ASSERT_TRUE(database.CloseDatabase() && database.OpenDatabase(path, false)); }

    const DoubleQuotedTexts rejected{false};
};

TEST_F(DatabaseApiDoubleQuotedTextsTest, OnlyNumbersAndBoundTextsAreAcceptedWithoutThem)
{
    Reopen();
    for (const auto& [name, cell] :
         {std::pair("kitchen", TextCell("kitchen")), std::pair("", TextCell("")), std::pair("ab", BlobCell("ab"))}) {
        const RawFailure unknown = FailureOfExec(RawSqlite(":memory:").Handle(), std::string("SELECT \"") + name + '"');

        EXPECT_THAT(database.WriteTableValues("person", {{"name"}, {{{cell}}}}), FailedWith(unknown));
        EXPECT_THAT(Update("name", cell), FailedWith(unknown));
        EXPECT_THAT(unknown.message, testing::StartsWith("no such column: "));
    }
    EXPECT_TRUE(Update("age", IntegerCell(31)));
    SqlCommand rename = database.PrepareStatement("UPDATE person SET name = ? WHERE id=4");
    EXPECT_TRUE(rename.BindText(1, "O'Brien") && rename.Step());

    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("'Ann'", "31"), ElementsAre("'O''Brien'", "40")));
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, ApplicationCanEnableThem)
{
    const DoubleQuotedTexts accepted(true);
    Reopen();

    EXPECT_TRUE(Update("name", TextCell("Bob")));
    EXPECT_TRUE(database.WriteTableValues("person", {{"name"}, {{{TextCell("Ada")}}}}));

    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("'Bob'", "30"), eve, ElementsAre("'Ada'", "NULL")));
}

class DatabaseApiWritingMemoryTest : public OpenFacade {
protected:
    DatabaseApiWritingMemoryTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE event (name, time)"));
        data.rows.assign(100, {{BlobCell(std::string(50, 'x')), TagCell(DbTableColumnType::UnixTimeNow)}});
    }

    /// The size of the largest allocation while `act` runs, without the zero byte at its end.
    template <typename Act>
    static std::size_t LargestDuring(Act act)
    {
        const LargestAllocation largest;
        EXPECT_TRUE(act());
        return largest.Size() - 1;
    }

    const std::string cells = "\"" + std::string(50, 'x') + "\",strftime('%s', 'now')";
    DbTableDataWrite data{{"name", "time"}, {}};
};

// The expected size counts a comma for every item, but a list of n items has n - 1 commas. So it is one byte too large
// for the list of columns, for the list of rows and for each row.
TEST_F(DatabaseApiWritingMemoryTest, InsertIsAllocatedOnceWithOneExtraBytePerList)
{
    std::string text = "INSERT INTO event (name,time) VALUES (" + cells + ")";
    for (std::size_t row = 1; row < data.rows.size(); ++row) {
        text += " ,(" + cells + ")";
    }

    EXPECT_EQ(LargestDuring([&] { return database.WriteTableValues("event", data); }),
              text.size() + data.rows.size() + 2);
}

TEST_F(DatabaseApiWritingMemoryTest, UpdateIsAllocatedOnceWithFewExtraBytes)
{
    data.rows.back() = {{BlobCell(""), IntegerCell(0)}}; // only the first row counts
    const std::string condition = "WHERE name IS NOT NULL";
    const std::string text = "UPDATE event SET (name,time)=(" + cells + ") " + condition;
    EXPECT_EQ(LargestDuring([&] { return database.UpdateTableValues("event", data, condition); }), text.size() + 9);
}

} // namespace

} // namespace Morvik::sql::tests
