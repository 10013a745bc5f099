#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DatabaseApiWritingTest : public OpenFacade {
protected:
    DatabaseApiWritingTest() { EXPECT_TRUE(database.Execute("CREATE TABLE t (a, b)")); }
};

TEST_F(DatabaseApiWritingTest, InsertsEveryRowInOrderWithOneStatement)
{
    const DbTableDataWrite data{{"b", "a"}, {{{IntegerCell(1), RealCell(1.5)}}, {{TextCell("two"), IntegerCell(2)}}}};
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.WriteTableValues("t", data));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(),
                ElementsAre(R"(sqlite3_exec(handle, INSERT INTO t (b,a) VALUES (1,1.5) ,("two",2), null, null))"));
    EXPECT_THAT(PlainRows("SELECT a, b FROM t"), ElementsAre(ElementsAre("1.5", "1"), ElementsAre("2", "'two'")));
}

TEST_F(DatabaseApiWritingTest, WithoutColumnNamesTheRowGivesEveryColumn)
{
    EXPECT_TRUE(database.WriteTableValues("t", {{}, {{{IntegerCell(1), IntegerCell(2)}}}}));

    EXPECT_THAT(PlainRows("SELECT a, b FROM t"), ElementsAre(ElementsAre("1", "2")));
}

TEST_F(DatabaseApiWritingTest, LeadingEmptyColumnNamesAreLeftOut)
{
    EXPECT_TRUE(database.WriteTableValues("t", {{"", "b"}, {{{IntegerCell(1)}}}}));

    EXPECT_THAT(PlainRows("SELECT a, b FROM t"), ElementsAre(ElementsAre("NULL", "1")));
}

TEST_F(DatabaseApiWritingTest, CellsAreWrittenInTheirOrderWhateverColumnTheyWereReadFrom)
{
    DbTableColumnValue first = IntegerCell(1);
    DbTableColumnValue second = IntegerCell(2);
    first.column = 1;
    second.column = 0;

    EXPECT_TRUE(database.WriteTableValues("t", {{"a", "b"}, {{{first, second}}}}));

    EXPECT_THAT(PlainRows("SELECT a, b FROM t"), ElementsAre(ElementsAre("1", "2")));
}

TEST_F(DatabaseApiWritingTest, NamesInQuotesOfTheCallersAreAccepted)
{
    ASSERT_TRUE(database.Execute(R"(CREATE TABLE "my table" ("order" INTEGER))"));

    EXPECT_FALSE(database.WriteTableValues("my table", {{"\"order\""}, {{{IntegerCell(1)}}}}));
    EXPECT_FALSE(database.WriteTableValues("\"my table\"", {{"order"}, {{{IntegerCell(1)}}}}));
    EXPECT_TRUE(database.WriteTableValues("\"my table\"", {{"\"order\""}, {{{IntegerCell(1)}}}}));

    EXPECT_THAT(PlainRows("SELECT * FROM \"my table\""), ElementsAre(ElementsAre("1")));
}

TEST_F(DatabaseApiWritingTest, TextIsStoredWithItsApostrophesDoubled)
{
    EXPECT_TRUE(database.WriteTableValues("t", {{"a", "b"}, {{{TextCell("O'Brien"), TextCell("say \"hi\"")}}}}));

    EXPECT_EQ(PlainRows("SELECT hex(a), hex(b) FROM t"), PlainRows("SELECT hex('O''''Brien'), hex('say \"hi\"')"));
}

TEST_F(DatabaseApiWritingTest, TextEqualToAColumnNameIsStoredAsText)
{
    EXPECT_TRUE(database.WriteTableValues("t", {{"a", "b"}, {{{IntegerCell(1), TextCell("a")}}}}));

    EXPECT_THAT(PlainRows("SELECT a, b FROM t"), ElementsAre(ElementsAre("1", "'a'")));
}

TEST_F(DatabaseApiWritingTest, BlobsAreStoredAsText)
{
    EXPECT_TRUE(database.WriteTableValues("t", {{"a"}, {{{BlobCell("AB")}}}}));

    EXPECT_THAT(PlainRows("SELECT a FROM t"), ElementsAre(ElementsAre("'AB'")));
}

TEST_F(DatabaseApiWritingTest, QuotationMarkInABlobBreaksItsStatement)
{
    EXPECT_FALSE(database.WriteTableValues("t", {{"a"}, {{{BlobCell("A\"B")}}}}));

    EXPECT_EQ(database.GetLastError(), SQLITE_ERROR);
    EXPECT_THAT(PlainRows("SELECT a FROM t"), IsEmpty());
}

TEST_F(DatabaseApiWritingTest, BlobFromOutsideCanRunStatementsOfItsOwn)
{
    EXPECT_TRUE(database.WriteTableValues("t", {{"a"}, {{{BlobCell("A\"); DROP TABLE t; --")}}}}));

    EXPECT_THAT(PlainRows("SELECT name FROM sqlite_master"), IsEmpty());
}

TEST_F(DatabaseApiWritingTest, TextFromOutsideStaysAText)
{
    EXPECT_TRUE(database.WriteTableValues("t", {{"a"}, {{{TextCell("A\"); DROP TABLE t; --")}}}}));

    EXPECT_THAT(PlainRows("SELECT a FROM t"), ElementsAre(ElementsAre("'A\"); DROP TABLE t; --'")));
}

TEST_F(DatabaseApiWritingTest, TimesAreComputedBySqlite)
{
    const DbTableDataWrite data{
        {"a", "b"},
        {{{TagCell(DbTableColumnType::DateTimeNow), TagCell(DbTableColumnType::JulianDayNow)}},
         {{TagCell(DbTableColumnType::DateTimeNowLocalTime), TagCell(DbTableColumnType::UnixTimeNow)}}}};
    const std::string withinAnHour = "SELECT abs(julianday(a) - julianday('now')) < 0.05, typeof(b), "
                                     "abs(b - julianday('now')) < 0.05 FROM t WHERE rowid = 1";
    const std::string localWithinAnHour = "SELECT abs(julianday(a) - julianday('now', 'localtime')) < 0.05, typeof(b), "
                                          "abs(b - strftime('%s', 'now')) < 3600 FROM t WHERE rowid = 2";

    EXPECT_TRUE(database.WriteTableValues("t", data));

    EXPECT_THAT(PlainRows(withinAnHour), ElementsAre(ElementsAre("1", "'real'", "1")));
    EXPECT_THAT(PlainRows(localWithinAnHour), ElementsAre(ElementsAre("1", "'text'", "1")));
}

TEST_F(DatabaseApiWritingTest, SuccessResetsTheCodeAndKeepsTheMessage)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.WriteTableValues("t", {{"a"}, {{{IntegerCell(1)}}}}));

    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(DatabaseApiWritingTest, MissingTableNameIsFoundFirstAndReachesNothing)
{
    DatabaseApi closed;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.WriteTableValues("", {{"a", "", "b"}, {{{InvalidCell()}}}}));
    EXPECT_FALSE(closed.WriteTableValues("", {}));

    EXPECT_THAT(database, HasError(112, "Missing table name."));
    EXPECT_THAT(closed, HasError(112, "Missing table name."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(DatabaseApiWritingTest, ViolatedConstraintTakesOverSqlitesRecordAndInsertsNoRow)
{
    ASSERT_TRUE(database.Execute("CREATE UNIQUE INDEX i ON t (a); INSERT INTO t VALUES (2, 'kept')"));
    const RawFailure plain = PlainRejection("INSERT INTO t (a) VALUES (1) ,(2)");

    EXPECT_FALSE(database.WriteTableValues("t", {{"a"}, {{{IntegerCell(1)}}, {{IntegerCell(2)}}}}));

    EXPECT_EQ(plain.code, SQLITE_CONSTRAINT);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(PlainRows("SELECT a, b FROM t"), ElementsAre(ElementsAre("2", "'kept'")));
}

TEST_F(DatabaseApiWritingTest, FailedInsertLeavesTheQueryWhereItWas)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1 UNION SELECT 2"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_FALSE(database.WriteTableValues("t", {{"missing"}, {{{IntegerCell(1)}}}}));

    ASSERT_TRUE(database.WriteTableValues("t", {{"a"}, {{{IntegerCell(1)}}}}));
    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_THAT(CellTexts(row), ElementsAre("0:Integer int(2)"));
}

TEST(DatabaseApiClosedTest, InsertAnswersWhatSqliteAnswersWithoutAConnection)
{
    const RawFailure plain = FailureOfExec(nullptr, "INSERT INTO t (a) VALUES (1)");
    DatabaseApi database;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.WriteTableValues("t", {{"a"}, {{{IntegerCell(1)}}}}));

    EXPECT_EQ(plain.code, SQLITE_MISUSE);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(sqlite.Executed(), ElementsAre("INSERT INTO t (a) VALUES (1)"));
}

} // namespace

} // namespace Morvik::sql::tests
