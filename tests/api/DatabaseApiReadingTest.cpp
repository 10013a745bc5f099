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

class DatabaseApiReadingTest : public OpenFacade {
protected:
    DatabaseApiReadingTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 'one'), (2, 'two')"));
    }

    DbTableData data;
};

TEST_F(DatabaseApiReadingTest, ReadsEveryRowInOrder)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.ReadValues("SELECT b, a FROM t ORDER BY a DESC", data));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(two)", "1:Integer int(2)"),
                                             ElementsAre("0:Text string(one)", "1:Integer int(1)")));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesReadsTheWholeTableByItsNameAsGiven)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadTableValues("t", data));
    EXPECT_TRUE(database.ReadTableValues("t WHERE a=2", data));

    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, SELECT * FROM t, -1)",
                            "sqlite3_prepare(handle, SELECT * FROM t WHERE a=2, -1)"));
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)", "1:Text string(one)"),
                                             ElementsAre("0:Integer int(2)", "1:Text string(two)"),
                                             ElementsAre("0:Integer int(2)", "1:Text string(two)")));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesQuotesNoName)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE \"my table\" (a); INSERT INTO \"my table\" VALUES (1)"));
    const RawFailure plain = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT * FROM my table");

    EXPECT_FALSE(database.ReadTableValues("my table", data));
    EXPECT_NE(plain.code, 0);
    EXPECT_THAT(database, HasError(plain.code, plain.message));

    EXPECT_TRUE(database.ReadTableValues("\"my table\"", data));
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)")));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesWithoutANameGetsSqlitesSyntaxError)
{
    const RawFailure plain = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT * FROM ");

    EXPECT_FALSE(database.ReadTableValues("", data));

    EXPECT_EQ(plain.code, SQLITE_ERROR);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesDoesNotGoThroughAnOverrideOfReadValues)
{
    class Overriding : public DatabaseApi {
    public:
        bool ReadValues(const std::string&, DbTableData&) const override { return false; }
    };
    Overriding overriding;
    ASSERT_TRUE(overriding.OpenDatabase(path, true));

    EXPECT_TRUE(overriding.ReadTableValues("t", data));

    EXPECT_EQ(data.rows.size(), 2U);
}

TEST_F(DatabaseApiReadingTest, RowsAreAppended)
{
    data.rows = {{{TextCell("kept")}}};

    EXPECT_TRUE(database.ReadValues("SELECT a FROM t", data));
    EXPECT_TRUE(database.ReadValues("SELECT a FROM t", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(kept)"), ElementsAre("0:Integer int(1)"),
                                             ElementsAre("0:Integer int(2)"), ElementsAre("0:Integer int(1)"),
                                             ElementsAre("0:Integer int(2)")));
}

TEST_F(DatabaseApiReadingTest, NoRowsAreASuccess)
{
    data.rows = {{{TextCell("kept")}}};

    EXPECT_TRUE(database.ReadValues("SELECT a FROM t WHERE 0", data));
    EXPECT_THAT(database, HasError(0, ""));

    EXPECT_TRUE(database.ReadTableValues("sqlite_master WHERE 0", data));
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(kept)")));
}

TEST_F(DatabaseApiReadingTest, TextWithoutAStatementReadsNoRows)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.ReadValues("-- nothing", data));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(data.rows, IsEmpty());
    EXPECT_TRUE(database.CloseDatabase()) << "no statement is held";
}

TEST_F(DatabaseApiReadingTest, OnlyTheFirstStatementIsRead)
{
    EXPECT_TRUE(database.ReadValues("SELECT a FROM t WHERE a=1; SELECT a FROM t; nonsense", data));

    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)")));
}

TEST_F(DatabaseApiReadingTest, ClosedDatabaseIsFoundBeforeAMissingText)
{
    ASSERT_TRUE(database.CloseDatabase());
    data.rows = {{{TextCell("kept")}}};
    const SqliteCallRecorder sqlite;

    for (const char* sql : {"SELECT 1", ""}) {
        EXPECT_FALSE(database.ReadValues(sql, data));
        EXPECT_THAT(database, HasError(111, "Database isn't open."));
    }
    EXPECT_FALSE(database.ReadTableValues("t", data));
    EXPECT_THAT(database, HasError(111, "Database isn't open."));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(kept)")));
}

TEST_F(DatabaseApiReadingTest, MissingTextIsRejected)
{
    data.rows = {{{TextCell("kept")}}};
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.ReadValues("", data));

    EXPECT_THAT(database, HasError(112, "Missing query SQL statement."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(kept)")));
}

TEST_F(DatabaseApiReadingTest, RejectedTextTakesOverSqlitesRecord)
{
    const std::string sql = "SELECT missing FROM t";
    const RawFailure plain = FailureOfPrepare(RawSqlite(path).Handle(), sql);
    data.rows = {{{TextCell("kept")}}};

    EXPECT_FALSE(database.ReadValues(sql, data));

    EXPECT_NE(plain.code, 0);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Text string(kept)")));
}

TEST_F(DatabaseApiReadingTest, FailedStepKeepsTheRowsBeforeIt)
{
    ASSERT_TRUE(database.Execute("INSERT INTO t VALUES (-9223372036854775808, 'smallest'), (4, 'four')"));
    const std::string sql = "SELECT abs(a) FROM t";
    const PlainWalk plain = LegacyWalk(RawSqlite(path).Handle(), sql);
    ASSERT_EQ(plain.rows, 2);
    ASSERT_NE(plain.step.code, SQLITE_DONE);

    EXPECT_FALSE(database.ReadValues(sql, data));

    EXPECT_THAT(database, HasError(plain.step.code, plain.step.message));
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)"), ElementsAre("0:Integer int(2)")));
}

TEST_F(DatabaseApiReadingTest, NextReadForgetsTheFailedOne)
{
    ASSERT_FALSE(database.ReadValues("SELECT abs(-9223372036854775808)", data));

    EXPECT_TRUE(database.ReadValues("SELECT 1", data));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(1)")));
}

TEST_F(DatabaseApiReadingTest, StatementOfAReadIsReleasedByTheNextOne)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1 WHERE 0", data));
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadValues("SELECT 2 WHERE 0", data));

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)",
                                            "sqlite3_prepare(handle, SELECT 2 WHERE 0, -1)", "sqlite3_step()"));
}

TEST_F(DatabaseApiReadingTest, RejectedReadReleasesTheStatementBefore)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1", data));

    EXPECT_FALSE(database.ReadValues("", data));

    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiReadingTest, DatabaseClosesOnlyAfterTheReadIsReleased)
{
    const RawFailure plain = FailureOfCloseWithAStatement();
    ASSERT_TRUE(database.ReadValues("SELECT a FROM t", data));

    EXPECT_FALSE(database.CloseDatabase());
    EXPECT_EQ(plain.code, SQLITE_BUSY);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_TRUE(database.IsOpen());

    EXPECT_TRUE(database.CloseReadTable());
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_FALSE(database.IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
