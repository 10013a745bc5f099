#include <string>
#include <vector>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/ReferenceRendering.h"
#include "support/SqliteCallRecorder.h"

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

TEST_F(DatabaseApiTablesTest, CreateMakesTheDescribedTableWithOneCall)
{
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.CreateTable(package), Succeeded());

    EXPECT_EQ(sqlite.Calls().size(), 1U);
    EXPECT_EQ(sqlite.Executed().size(), 1U);
    EXPECT_THAT(RawRows("SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info('package')"),
                ElementsAre(ElementsAre("'name'", "'TEXT'", "0", "NULL", "1"),
                            ElementsAre("'size'", "'INTEGER'", "1", "'0'", "0")));
}

TEST_F(DatabaseApiTablesTest, CreateLeavesAnExistingTableUnchanged)
{
    EXPECT_TRUE(database.CreateTable({"other", package.columns, {}}));
    EXPECT_THAT(RawRows("SELECT a FROM other"), ElementsAre(ElementsAre("1"), ElementsAre("2")));
}

TEST_F(DatabaseApiTablesTest, KeysOfACreatedTableSkipConflictingRowsSilently)
{
    ASSERT_TRUE(database.CreateTable({"n", {{"a"}, {"b"}}, {{'a'}, {'b'}, "", {}}}));
    EXPECT_TRUE(database.Execute("INSERT INTO n VALUES (1, 1), (1, 2), (2, 1), (3, 3)"));
    EXPECT_THAT(RawRows("SELECT a, b FROM n"), ElementsAre(ElementsAre("1", "1"), ElementsAre("3", "3")));
}

TEST_F(DatabaseApiTablesTest, DropDeletesTheRowsAndThenDropsTheTable)
{
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.DropTable("T"), Succeeded());

    EXPECT_THAT(sqlite.Executed(), ElementsAre("DELETE FROM T", "DROP TABLE IF EXISTS T"));
    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)"));
    EXPECT_THAT(Tables(), ElementsAre(ElementsAre("'other'")));
}

TEST_F(DatabaseApiTablesTest, AlterRunsOneStatementWithBothNamesAsGiven)
{
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.AlterTable("T", "\"two words\""), Succeeded());

    EXPECT_THAT(sqlite.Executed(), ElementsAre("ALTER TABLE T RENAME TO \"two words\""));
    EXPECT_THAT(sqlite.CallsOf("sqlite3_prepare"),
                ElementsAre("sqlite3_prepare(handle, " + TableExistsQuery("T") + ", -1)"));
    EXPECT_THAT(Tables(), ElementsAre(ElementsAre("'other'"), ElementsAre("'two words'")));
    EXPECT_THAT(RawRows("SELECT a FROM \"two words\""),
                ElementsAre(ElementsAre("1"), ElementsAre("2"), ElementsAre("3")));
}

TEST_F(DatabaseApiTablesTest, DropAndAlterRunNothingIfTheTableIsNotFound)
{
    SqliteCallRecorder sqlite;
    for (const std::string name : {"Absent", "", "it's", "main.t"}) {
        EXPECT_EQ(database.DropTable(name), name == "Absent" || name == "main.t") << name;
        EXPECT_THAT(database.AlterTable(name, "x"), FailedWith(113, "No table exists: " + name));
    }

    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_IOERR, false); // counts as an absent table
    EXPECT_TRUE(database.DropTable("t"));
    sqlite.ReplaceNextResult("sqlite3_step", SQLITE_IOERR, false);
    EXPECT_THAT(database.AlterTable("t", "x"), FailedWith(113, "No table exists: t"));

    EXPECT_FALSE(sqlite.Pending());
    EXPECT_THAT(sqlite.Executed(), IsEmpty());
}

TEST_F(DatabaseApiTablesTest, FailedDeleteKeepsTheTable)
{
    RawSqlite(path).Execute("CREATE TRIGGER keep BEFORE DELETE ON t BEGIN SELECT RAISE(ABORT, 'rows are kept'); END");
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.DropTable("t"), FailedWith(SQLITE_CONSTRAINT, "rows are kept"));

    EXPECT_THAT(sqlite.Executed(), ElementsAre("DELETE FROM t"));
    EXPECT_THAT(RawRows("SELECT count(*) FROM t"), ElementsAre(ElementsAre("3")));
}

TEST_F(DatabaseApiTablesTest, FailedDropLeavesAnEmptyTable)
{
    BeginWalk();

    EXPECT_FALSE(database.DropTable("t"));

    EXPECT_EQ(database.GetLastError(), SQLITE_LOCKED);
    EXPECT_EQ(Tables(), bothTables);
    EXPECT_THAT(RawRows("SELECT count(*) FROM t"), ElementsAre(ElementsAre("0")));
}

TEST_F(DatabaseApiTablesTest, NewNameIsLeftToSqlite)
{
    for (const std::string newName : {"", "other", "t", "order", "two words", "it's", "main.u"}) {
        EXPECT_THAT(database.AlterTable("t", newName), FailedWith(RawRejection("ALTER TABLE t RENAME TO " + newName)));
        EXPECT_EQ(Tables(), bothTables) << newName;
    }
    EXPECT_TRUE(database.AlterTable("t", "u; CREATE TABLE extra (a)"));
    EXPECT_THAT(Tables(), ElementsAre(ElementsAre("'extra'"), ElementsAre("'other'"), ElementsAre("'u'")));
}

// SQLite accepts these names only in quotes. The operations write a name as given.
TEST_F(DatabaseApiTablesTest, NameIsNotQuoted)
{
    for (const std::string name : {"two words", "order", "2nd", "a-b", "a("}) {
        SCOPED_TRACE(name);
        const std::string quoted = '"' + name + '"';
        ASSERT_TRUE(database.CreateTable({quoted, {{"a"}}, {}}));
        ASSERT_TRUE(database.WriteTableValues(quoted, {{}, {{{IntegerCell(1)}}}}));

        EXPECT_TRUE(database.ExistsTable(name, result));
        EXPECT_THAT(database.DropTable(name), FailedWith(RawRejection("DELETE FROM " + name)));
        EXPECT_THAT(database.AlterTable(name, "x"), FailedWith(RawRejection("ALTER TABLE " + name + " RENAME TO x")));
        EXPECT_EQ(database.ExistData(name, "", result), 0);
        EXPECT_THAT(database, HasErrorOf(RejectedQuery("SELECT count(*) FROM " + name)));

        // The quotes become a part of the name that the test for the table looks for.
        EXPECT_FALSE(database.ExistsTable(quoted, result));
        EXPECT_TRUE(database.DropTable(quoted));
        EXPECT_THAT(database.AlterTable(quoted, "x"), FailedWith(113, "No table exists: " + quoted));
        EXPECT_EQ(database.ExistData(quoted, "", result), 0);
        EXPECT_THAT(RawRows("SELECT a FROM " + quoted), ElementsAre(ElementsAre("1")));
    }
}

TEST_F(DatabaseApiTablesTest, ApostropheInANameIsNotEscaped)
{
    for (const std::string name : {"it's", "'a'"}) {
        const RawFailure failure = RejectedQuery(TableExistsQuery(name));

        EXPECT_THAT(database.ExistsTable(name, result), FailedWith(failure));
        EXPECT_EQ(result, failure.code);
        EXPECT_THAT(database.DropTable(name), FailedWith(failure));
        EXPECT_THAT(database.AlterTable(name, "x"), FailedWith(113, "No table exists: " + name));
        EXPECT_EQ(database.ExistData(name, "", result), 0);
        EXPECT_THAT(database, HasErrorOf(failure));
    }
}

} // namespace

} // namespace Morvik::sql::tests
