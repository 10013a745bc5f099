#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "support/HasError.h"
#include "support/OpenFacade.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using Texts = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

class AlterTableTest : public OpenFacade {
protected:
    AlterTableTest()
    {
        RawSqlite(path).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2), (3);"
                                "CREATE TABLE other (a); INSERT INTO other VALUES (1), (2)");
    }

    Rows Tables() const { return PlainRows("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"); }

    const Rows bothTables{{"'other'"}, {"'t'"}};
};

TEST_F(AlterTableTest, RenamesTheTable)
{
    EXPECT_TRUE(database.AlterTable("t", "renamed"));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_EQ(Tables(), (Rows{{"'other'"}, {"'renamed'"}}));
    EXPECT_EQ(PlainRows("SELECT count(*) FROM renamed"), (Rows{{"3"}}));
}

TEST_F(AlterTableTest, RunsOneStatementWithBothNamesAsGiven)
{
    const SqliteCallRecorder recorded;

    ASSERT_TRUE(database.AlterTable("T", "\"two words\""));

    EXPECT_EQ(recorded.Executed(), Texts{"ALTER TABLE T RENAME TO \"two words\""});
    EXPECT_EQ(recorded.CallsOf("sqlite3_prepare"),
              (Texts{"sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)"}));
    EXPECT_EQ(Tables(), (Rows{{"'other'"}, {"'two words'"}}));
}

TEST_F(AlterTableTest, AbsentTableIsAFailureWithNothingRun)
{
    const SqliteCallRecorder recorded;

    EXPECT_FALSE(database.AlterTable("Absent", "x"));

    EXPECT_TRUE(recorded.Executed().empty());
    EXPECT_THAT(database, HasError(113, "No table exists: Absent"));
}

TEST_F(AlterTableTest, EmptyNameIsAnAbsentTable)
{
    EXPECT_FALSE(database.AlterTable("", "x"));

    EXPECT_THAT(database, HasError(113, "No table exists: "));
}

TEST_F(AlterTableTest, FailedExistenceTestIsAnAbsentTable)
{
    EXPECT_FALSE(database.AlterTable("it's", "x"));
    EXPECT_THAT(database, HasError(113, "No table exists: it's"));

    SqliteCallRecorder recorded;
    recorded.ReplaceNextResult("sqlite3_step", SQLITE_IOERR, false);
    EXPECT_FALSE(database.AlterTable("t", "x"));
    EXPECT_FALSE(recorded.Pending());
    EXPECT_THAT(database, HasError(113, "No table exists: t"));
}

TEST_F(AlterTableTest, NewNameIsLeftToSqlite)
{
    for (const std::string newName : {"", "other", "t", "order", "two words", "it's", "main.u"}) {
        const RawFailure failure = PlainRejection("ALTER TABLE t RENAME TO " + newName);

        EXPECT_FALSE(database.AlterTable("t", newName)) << newName;

        EXPECT_THAT(database, HasError(failure.code, failure.message)) << newName;
        EXPECT_EQ(Tables(), bothTables) << newName;
    }
}

TEST_F(AlterTableTest, LeavesARowByRowWalkUndisturbed)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM other"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_FALSE(database.AlterTable("absent", "x"));
    EXPECT_TRUE(
        database.CreateTable({"fresh", {{"a"}}, {}})); // resets the code, which the row-by-row query does not do

    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_EQ(std::get<int>(row.cells.at(0).value), 2);
}

TEST_F(AlterTableTest, SuccessResetsTheCodeAndKeepsTheEarlierMessage)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.AlterTable("t", "renamed"));

    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST(ClosedDatabaseApiTest, AlterTableLooksAtTheConnectionFirst)
{
    DatabaseApi database;
    const SqliteCallRecorder recorded;

    for (const std::string name : {"t", "", "it's"}) {
        EXPECT_FALSE(database.Execute("")) << name;
        EXPECT_FALSE(database.AlterTable(name, "")) << name;
        EXPECT_THAT(database, HasError(111, "Database isn't open.")) << name;
    }
    EXPECT_TRUE(recorded.Calls().empty());
}

} // namespace

} // namespace Morvik::sql::tests
