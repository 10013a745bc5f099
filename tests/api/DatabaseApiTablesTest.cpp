#include <sqlite3.h>

#include <string>
#include <vector>

#include "api/FacadeTest.h"
#include "support/RawLegacyStatement.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Tests that create, drop and rename tables.
class DatabaseApiTablesTest : public FacadeTest {
protected:
    std::vector<std::vector<std::string>> Tables() const
    {
        return RawRows("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name");
    }

    const DbTableDefinition package{"package",
                                    {{"name", DbTableColumnType::Text, 0, PrimaryKey},
                                     {"size", DbTableColumnType::Integer, 0, NotNull | Default, {{Default, "0"}}}},
                                    {}};
    const std::vector<std::vector<std::string>> bothTables{{"'other'"}, {"'t'"}};
};

TEST_F(DatabaseApiTablesTest, CreateMakesTheDescribedTableWithoutAQuery)
{
    {
        const SqliteCallRecorder sqlite;
        ASSERT_TRUE(database.CreateTable(package));
        EXPECT_EQ(sqlite.Calls().size(), 1U);
        EXPECT_EQ(sqlite.Executed().size(), 1U);
    }
    EXPECT_THAT(RawRows("SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info('package')"),
                ElementsAre(ElementsAre("'name'", "'TEXT'", "0", "NULL", "1"),
                            ElementsAre("'size'", "'INTEGER'", "1", "'0'", "0")));
}

TEST_F(DatabaseApiTablesTest, CreateSucceedsTwiceAndLeavesAnExistingTableUnchanged)
{
    EXPECT_TRUE(database.CreateTable(package));
    EXPECT_TRUE(database.CreateTable(package));
    EXPECT_TRUE(database.CreateTable({"other", package.columns, {}}));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(RawRows("SELECT a FROM other"), ElementsAre(ElementsAre("1"), ElementsAre("2")));
}

TEST_F(DatabaseApiTablesTest, KeysOfACreatedTableSkipConflictingRowsSilently)
{
    ASSERT_TRUE(database.CreateTable({"n", {{"a"}, {"b"}}, {{'a'}, {'b'}, "", {}}}));
    EXPECT_TRUE(database.Execute("INSERT INTO n VALUES (1, 1), (1, 2), (2, 1), (3, 3)"));
    EXPECT_THAT(RawRows("SELECT a, b FROM n"), ElementsAre(ElementsAre("1", "1"), ElementsAre("3", "3")));
}

TEST_F(DatabaseApiTablesTest, FailedCreateLeavesTheDatabaseAsItWas)
{
    const SqliteCallRecorder sqlite;
    EXPECT_FALSE(database.CreateTable({"", package.columns, {}}));
    EXPECT_THAT(database, HasError(112, "Missing table name."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());

    EXPECT_FALSE(database.CreateTable({"reading", {{"owner_id"}}, {{}, {}, "owner", {"owner_id"}}}));
    EXPECT_EQ(Tables(), bothTables);
}

TEST_F(DatabaseApiTablesTest, DropDeletesTheRowsAndThenDropsTheTable)
{
    {
        const SqliteCallRecorder sqlite;
        EXPECT_TRUE(database.DropTable("T"));
        EXPECT_THAT(sqlite.Executed(), ElementsAre("DELETE FROM T", "DROP TABLE IF EXISTS T"));
        EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                    ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)"));
    }
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(Tables(), ElementsAre(ElementsAre("'other'")));
}

TEST_F(DatabaseApiTablesTest, AlterRunsOneStatementWithBothNamesAsGiven)
{
    {
        const SqliteCallRecorder sqlite;
        EXPECT_TRUE(database.AlterTable("T", "\"two words\""));
        EXPECT_THAT(sqlite.Executed(), ElementsAre("ALTER TABLE T RENAME TO \"two words\""));
        EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                    ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)"));
    }
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(Tables(), ElementsAre(ElementsAre("'other'"), ElementsAre("'two words'")));
    EXPECT_THAT(RawRows("SELECT a FROM \"two words\""),
                ElementsAre(ElementsAre("1"), ElementsAre("2"), ElementsAre("3")));
}

TEST_F(DatabaseApiTablesTest, DropSucceedsAndRenameFailsForAnAbsentTable)
{
    const std::string apostrophe = "it's";
    for (const auto& [name, error] : {std::pair(std::string("Absent"), RawFailure()),
                                      std::pair(std::string(), RawFailure{112, "Missing table name."}),
                                      std::pair(apostrophe, RejectedQuery(TableExistsQuery(apostrophe)))}) {
        DatabaseApi facade;
        ASSERT_TRUE(facade.OpenDatabase(path, false));
        const SqliteCallRecorder sqlite;

        EXPECT_EQ(facade.DropTable(name), error.code == 0);
        EXPECT_THAT(facade, HasErrorOf(error));
        EXPECT_FALSE(facade.AlterTable(name, "x"));
        EXPECT_THAT(facade, HasError(113, "No table exists: " + name));

        EXPECT_THAT(sqlite.Executed(), IsEmpty());
        EXPECT_EQ(sqlite.Calls().empty(), name.empty());
    }
}

TEST_F(DatabaseApiTablesTest, FailedStepOfTheTestCountsAsAnAbsentTable)
{
    SqliteCallRecorder sqlite;

    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_IOERR, false);
    EXPECT_TRUE(database.DropTable("t"));
    EXPECT_THAT(database, HasError(0, ""));
    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_IOERR, false);
    EXPECT_FALSE(database.AlterTable("t", "x"));
    EXPECT_THAT(database, HasError(113, "No table exists: t"));

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(sqlite.Executed(), IsEmpty());
}

TEST_F(DatabaseApiTablesTest, FailedDeleteKeepsTheTable)
{
    RawSqlite(path).Execute("CREATE TRIGGER keep BEFORE DELETE ON t BEGIN SELECT RAISE(ABORT, 'rows are kept'); END");
    const RawFailure failure = RawRejection("DELETE FROM t");
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.DropTable("t"));

    EXPECT_THAT(sqlite.Executed(), ElementsAre("DELETE FROM t"));
    EXPECT_EQ(failure.message, "rows are kept");
    EXPECT_THAT(database, HasErrorOf(failure));
    EXPECT_THAT(RawRows("SELECT count(*) FROM t"), ElementsAre(ElementsAre("3")));
}

TEST_F(DatabaseApiTablesTest, FailedDropLeavesAnEmptyTable)
{
    RawSqlite raw(":memory:");
    raw.Execute("CREATE TABLE t (a); CREATE TABLE other (a); INSERT INTO other VALUES (1)");
    RawLegacyStatement active(raw, "SELECT a FROM other");
    active.Step();
    const RawFailure failure = FailureOfExec(raw.Handle(), "DROP TABLE t");
    ASSERT_NE(failure.code, 0);
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM other"));
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_FALSE(database.DropTable("t"));

    EXPECT_THAT(database, HasErrorOf(failure));
    EXPECT_EQ(Tables(), bothTables);
    EXPECT_THAT(RawRows("SELECT count(*) FROM t"), ElementsAre(ElementsAre("0")));
}

TEST_F(DatabaseApiTablesTest, NewNameIsLeftToSqlite)
{
    for (const std::string newName : {"", "other", "t", "order", "two words", "it's", "main.u"}) {
        const RawFailure failure = RawRejection("ALTER TABLE t RENAME TO " + newName);

        EXPECT_FALSE(database.AlterTable("t", newName)) << newName;

        EXPECT_THAT(database, HasErrorOf(failure)) << newName;
        EXPECT_EQ(Tables(), bothTables) << newName;
    }
}

TEST_F(DatabaseApiTablesTest, NewNameMayEndTheStatementAndBeginAnother)
{
    EXPECT_TRUE(database.AlterTable("t", "u; CREATE TABLE extra (a)"));
    EXPECT_THAT(Tables(), ElementsAre(ElementsAre("'extra'"), ElementsAre("'other'"), ElementsAre("'u'")));
}

} // namespace

} // namespace Morvik::sql::tests
