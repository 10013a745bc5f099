#include <sql/DatabaseApi.h>
#include <sql/DbTableDefinition.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/HasError.h"
#include "support/OpenFacade.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const DbTableColumnType Integer = DbTableColumnType::Integer;
const DbTableColumnType Text = DbTableColumnType::Text;

struct StatementCase {
    const char* name;
    DbTableDefinition definition;
    const char* statement;

    friend void PrintTo(const StatementCase& statementCase, std::ostream* stream) { *stream << statementCase.name; }
};

class CreateTableStatementTest : public OpenFacade, public testing::WithParamInterface<StatementCase> {};

TEST_P(CreateTableStatementTest, IsRunAsRendered)
{
    const SqliteCallRecorder recorded;

    database.CreateTable(GetParam().definition);

    EXPECT_EQ(recorded.Executed(), std::vector<std::string>{GetParam().statement});
}

TEST_P(CreateTableStatementTest, EndsAsRawSqliteEndsIt)
{
    const RawSqlite plain(":memory:");
    const RawFailure failure = FailureOfExec(plain.Handle(), GetParam().statement);

    const bool created = database.CreateTable(GetParam().definition);

    EXPECT_EQ(created, failure.code == 0);
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

const StatementCase Statements[] = {
    {"SensorLog",
     {"sensor_log",
      {{"id", Integer, 0, PrimaryKey, {{PrimaryKey, "AUTOINCREMENT"}}},
       {"room", Text, 0, NotNull},
       {"value", DbTableColumnType::Real},
       {"created", DbTableColumnType::DateTimeNow, 0, Default, {{Default, "(datetime('now'))"}}}},
      {{}, {'r'}, "", {}}},
     "CREATE TABLE IF NOT EXISTS sensor_log (id INTEGER PRIMARY KEY AUTOINCREMENT,room TEXT NOT NULL,value REAL "
     ",created TEXT DEFAULT (datetime('now')),UNIQUE (r) ON CONFLICT IGNORE)"},
    {"ForeignKey",
     {"reading", {{"owner_id", Integer}}, {{}, {}, "owner", {"owner_id"}}},
     "CREATE TABLE IF NOT EXISTS reading (owner_id INTEGER ,FOREIGN KEY (owner_id) REFERENCES owner(owner_id) ON "
     "DELETE SET NULL ))"},
    {"UnreferencedForeignKeyAfterAKey",
     {"t", {{"a", Text}}, {{'a'}, {}, "", {"a"}}},
     "CREATE TABLE IF NOT EXISTS t (a TEXT ,PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY (a) ))"},
    {"UnreferencedForeignKeyAlone",
     {"t", {{"a", Text}}, {{}, {}, "", {"a"}}},
     "CREATE TABLE IF NOT EXISTS t (a TEXT )"},
    {"OneColumn", {"t", {{"a", Text}}, {}}, "CREATE TABLE IF NOT EXISTS t (a TEXT )"},
    {"TwoColumns",
     {"t", {{"a", Text}, {"b", DbTableColumnType::Blob}}, {}},
     "CREATE TABLE IF NOT EXISTS t (a TEXT ,b BLOB )"},
    {"BothKeys",
     {"t", {{"a", Text}, {"b", Integer}, {"c"}}, {{'a', 'b'}, {'c'}, "", {}}},
     "CREATE TABLE IF NOT EXISTS t (a TEXT ,b INTEGER ,c  ,PRIMARY KEY (a,b) ON CONFLICT IGNORE,UNIQUE (c) ON "
     "CONFLICT IGNORE)"},
    {"NoColumns", {"t", {}, {}}, "CREATE TABLE IF NOT EXISTS t ()"},
    {"NoColumnsButAKey",
     {"t", {}, {{'a'}, {}, "", {}}},
     "CREATE TABLE IF NOT EXISTS t (,PRIMARY KEY (a) ON CONFLICT IGNORE)"},
    {"KeyOfAnUnknownColumn",
     {"t", {{"a", Text}}, {{'b'}, {}, "", {}}},
     "CREATE TABLE IF NOT EXISTS t (a TEXT ,PRIMARY KEY (b) ON CONFLICT IGNORE)"},
    {"CheckWithoutItsParentheses",
     {"t", {{"a", Integer, 0, Check, {{Check, "a > 0"}}}}, {}},
     "CREATE TABLE IF NOT EXISTS t (a INTEGER CHECK a > 0)"},
    {"NameWithABlank", {"two words", {{"a", Text}}, {}}, "CREATE TABLE IF NOT EXISTS two words (a TEXT )"},
    {"NameThatIsAKeyword", {"order", {{"a", Text}}, {}}, "CREATE TABLE IF NOT EXISTS order (a TEXT )"},
    {"NameWithAnApostrophe", {"it's", {{"a", Text}}, {}}, "CREATE TABLE IF NOT EXISTS it's (a TEXT )"},
    {"NameQuotedByTheCaller",
     {"\"two words\"", {{"\"order\"", Text}}, {}},
     "CREATE TABLE IF NOT EXISTS \"two words\" (\"order\" TEXT )"},
    {"NameWithItsSchema", {"main.t", {{"a", Text}}, {}}, "CREATE TABLE IF NOT EXISTS main.t (a TEXT )"},
};

INSTANTIATE_TEST_SUITE_P(Statements, CreateTableStatementTest, testing::ValuesIn(Statements),
                         [](const auto& statementCase) { return statementCase.param.name; });

class CreateTableTest : public OpenFacade {
protected:
    const DbTableDefinition packages{
        "package", {{"name", Text, 0, PrimaryKey}, {"size", Integer, 0, NotNull | Default, {{Default, "0"}}}}, {}};
};

TEST_F(CreateTableTest, MakesTheDescribedTable)
{
    ASSERT_TRUE(database.CreateTable(packages));

    const std::vector<std::vector<std::string>> columns{{"'name'", "'TEXT'", "0", "NULL", "1"},
                                                        {"'size'", "'INTEGER'", "1", "'0'", "0"}};
    EXPECT_EQ(PlainRows("SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info('package')"), columns);
}

TEST_F(CreateTableTest, SucceedsTwice)
{
    EXPECT_TRUE(database.CreateTable(packages));
    EXPECT_TRUE(database.CreateTable(packages));

    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(CreateTableTest, LeavesAnExistingTableUnchanged)
{
    RawSqlite(path).Execute("CREATE TABLE package (other); INSERT INTO package VALUES (1)");

    EXPECT_TRUE(database.CreateTable(packages));

    EXPECT_EQ(PlainRows("SELECT other FROM package"), (std::vector<std::vector<std::string>>{{"1"}}));
}

TEST_F(CreateTableTest, KeysOfATableSkipConflictingRowsSilently)
{
    ASSERT_TRUE(database.CreateTable({"t", {{"a", Integer}, {"b", Integer}}, {{'a'}, {'b'}, "", {}}}));

    EXPECT_TRUE(database.Execute("INSERT INTO t VALUES (1, 1), (1, 2), (2, 1), (3, 3)"));

    EXPECT_EQ(PlainRows("SELECT a, b FROM t"), (std::vector<std::vector<std::string>>{{"1", "1"}, {"3", "3"}}));
}

TEST_F(CreateTableTest, EmptyNameIsRefusedWithoutAskingSqlite)
{
    DbTableDefinition nameless = packages;
    nameless.name.clear();
    const SqliteCallRecorder recorded;

    EXPECT_FALSE(database.CreateTable(nameless));

    EXPECT_TRUE(recorded.Calls().empty());
    EXPECT_THAT(database, HasError(112, "Missing table name."));
}

TEST_F(CreateTableTest, RunsNoQuery)
{
    const SqliteCallRecorder recorded;

    ASSERT_TRUE(database.CreateTable(packages));

    EXPECT_TRUE(recorded.CallsOf("sqlite3_prepare").empty());
    EXPECT_TRUE(recorded.CallsOf("sqlite3_prepare_v2").empty());
}

TEST_F(CreateTableTest, SuccessResetsTheCodeAndKeepsTheEarlierMessage)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.CreateTable(packages));

    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(CreateTableTest, FailureLeavesTheDatabaseAsItWas)
{
    EXPECT_FALSE(database.CreateTable({"reading", {{"owner_id", Integer}}, {{}, {}, "owner", {"owner_id"}}}));

    EXPECT_TRUE(PlainRows("SELECT name FROM sqlite_master").empty());
}

TEST_F(CreateTableTest, ReadOnlyDatabaseRefusesWithSqlitesRecord)
{
    RawSqlite plain(path);
    plain.Execute("CREATE TABLE other (a); PRAGMA query_only=ON");
    const RawFailure failure = FailureOfExec(plain.Handle(), "CREATE TABLE package (name)");
    ASSERT_NE(failure.code, 0);
    DatabaseApi reader;
    ASSERT_TRUE(reader.OpenDatabase(path, true));

    EXPECT_FALSE(reader.CreateTable(packages));

    EXPECT_THAT(reader, HasError(failure.code, failure.message));
}

TEST_F(CreateTableTest, LeavesARowByRowWalkUndisturbed)
{
    RawSqlite(path).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)");
    ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));

    database.CreateTable({"", {}, {}});
    EXPECT_TRUE(database.CreateTable({"t", {{"a"}}, {}}));

    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_EQ(std::get<int>(row.cells.at(0).value), 2);
}

TEST(ClosedDatabaseApiTest, CreateTableIsRefused)
{
    DatabaseApi database;

    EXPECT_FALSE(database.CreateTable({"t", {{"a"}}, {}}));

    EXPECT_THAT(database, HasError(111, "Database isn't open."));
}

TEST(ClosedDatabaseApiTest, CreateTableLooksAtTheConnectionBeforeTheName)
{
    DatabaseApi database;

    EXPECT_FALSE(database.CreateTable({}));

    EXPECT_THAT(database, HasError(111, "Database isn't open."));
}

} // namespace

} // namespace Morvik::sql::tests
