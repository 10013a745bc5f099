#include <sqlite3.h>

#include <string>

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

TEST_F(DatabaseApiReadingTest, ReadTableValuesReadsTheTableByItsNameAsGiven)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.ReadTableValues("other", data));
    EXPECT_TRUE(database.ReadTableValues("other WHERE a=2", data));

    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, SELECT * FROM other, -1)",
                            "sqlite3_prepare(handle, SELECT * FROM other WHERE a=2, -1)"));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two, two));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesQuotesNoNameAndAcceptsNoEmptyOne)
{
    ASSERT_TRUE(database.Execute("ALTER TABLE other RENAME TO \"my table\""));

    ExpectRejectedTable("my table");
    ExpectRejectedTable("");
    EXPECT_EQ(database.GetLastError(), SQLITE_ERROR);

    EXPECT_TRUE(database.ReadTableValues("\"my table\"", data));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept, one, two));
}

TEST_F(DatabaseApiReadingTest, ReadTableValuesDoesNotCallAnOverrideOfReadValues)
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

TEST_F(DatabaseApiReadingTest, MissingTextIsRejectedAndReleasesTheStatementBefore)
{
    ASSERT_TRUE(database.ReadValues("SELECT 1 WHERE 0", data));
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.ReadValues("", data));

    EXPECT_THAT(database, HasError(112, "Missing query SQL statement."));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept));
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(DatabaseApiReadingTest, RejectedTextCopiesSqlitesError)
{
    const RawFailure failure = RejectedQuery("SELECT missing FROM t");

    EXPECT_FALSE(database.ReadValues("SELECT missing FROM t", data));

    EXPECT_THAT(database, HasErrorOf(failure));
    EXPECT_THAT(CellTexts(data), ElementsAre(kept));
}

TEST_F(DatabaseApiReadingTest, FailedStepKeepsTheRowsBeforeItAndTheNextReadForgetsIt)
{
    const std::string sql = "SELECT abs(iif(a = 3, -9223372036854775808, a)) FROM t";
    const PlainWalk raw = LegacyWalk(RawSqlite(path).Handle(), sql);
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

} // namespace

} // namespace Morvik::sql::tests
