#include <sqlite3.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The rules for the error and the walk that hold for every operation of the facade.

const DbTableDataWrite One{{"a"}, {{{IntegerCell(1)}}}};
const std::vector<DbTableColumnDefinition> Columns{{"a"}};

struct Call {
    const char* name;
    std::function<bool(DatabaseApi&)> run;

    friend void PrintTo(const Call& call, std::ostream* stream) { *stream << call.name; }
};

std::string NameOf(const testing::TestParamInfo<Call>& call)
{
    return call.param.name;
}

/// Whether ExistsTable() succeeds and returns this answer.
bool Exists(DatabaseApi& database, const std::string& table, bool answer)
{
    int result = -1;
    return database.ExistsTable(table, result) == answer && result == 0;
}

bool HasCount(DatabaseApi& database, const std::string& table, int count)
{
    int result = -1;
    return database.ExistData(table, "", result) == count && result == 0;
}

class FacadeSuccessTest : public FacadeTest, public testing::WithParamInterface<Call> {};

TEST_P(FacadeSuccessTest, ResetsTheCodeAndKeepsTheEarlierMessage)
{
    FailWithMissingCommand();

    EXPECT_TRUE(GetParam().run(database));

    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_TRUE(database.Succeeded());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, FacadeSuccessTest,
    testing::Values(
        Call{"CreateTable",
             [](auto& database) {
                 return database.CreateTable({"made", Columns, {}});
             }},
        Call{"ExistsTable", [](auto& database) { return Exists(database, "t", true); }},
        Call{"ExistsTableAbsent", [](auto& database) { return Exists(database, "absent", false); }},
        Call{"DropTable", [](auto& database) { return database.DropTable("t"); }},
        Call{"DropTableAbsent", [](auto& database) { return database.DropTable("absent"); }},
        Call{"AlterTable", [](auto& database) { return database.AlterTable("t", "renamed"); }},
        Call{"ExistData", [](auto& database) { return HasCount(database, "t", 3); }},
        Call{"Execute", [](auto& database) { return database.Execute("CREATE TABLE made (a)"); }},
        Call{"WriteTableValues", [](auto& database) { return database.WriteTableValues("t", One); }},
        Call{"UpdateTableValues", [](auto& database) { return database.UpdateTableValues("t", One, ""); }},
        Call{"SqlQueryBegin", [](auto& database) { return database.SqlQueryBegin("SELECT 1"); }},
        Call{"CloseReadTable", [](auto& database) { return database.CloseReadTable(); }},
        Call{"CloseDatabase", [](auto& database) { return database.CloseDatabase(); }},
        Call{"CloseDatabaseTwice", [](auto& database) { return database.CloseDatabase() && database.CloseDatabase(); }},
        Call{"OpenDatabase",
             [](auto& database) { return database.CloseDatabase() && database.OpenDatabase(":memory:", false); }}),
    NameOf);

class FacadeWalkTest : public FacadeTest, public testing::WithParamInterface<Call> {};

TEST_P(FacadeWalkTest, StaysOnItsRowDuringTheOperation)
{
    BeginWalk();

    EXPECT_TRUE(GetParam().run(database));

    ASSERT_TRUE(database.Execute("SELECT 0")) << "a failure would end the walk";
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)"));
}

INSTANTIATE_TEST_SUITE_P(
    Operations, FacadeWalkTest,
    testing::Values(
        Call{"CreateTable",
             [](auto& database) {
                 return database.CreateTable({"t", Columns, {}});
             }},
        Call{"CreateTableFailed", [](auto& database) { return !database.CreateTable({}); }},
        Call{"ExistsTable", [](auto& database) { return Exists(database, "t", true); }},
        Call{"ExistsTableAbsent", [](auto& database) { return Exists(database, "absent", false); }},
        Call{"DropTableAbsent", [](auto& database) { return database.DropTable("absent"); }},
        Call{"AlterTableFailed", [](auto& database) { return !database.AlterTable("absent", "x"); }},
        Call{"ExistDataAbsent", [](auto& database) { return HasCount(database, "absent", 0); }},
        Call{"ExecuteFailed", [](auto& database) { return !database.Execute("nonsense"); }},
        Call{"WriteTableValues", [](auto& database) { return database.WriteTableValues("other", One); }},
        Call{"WriteTableValuesFailed", [](auto& database) { return !database.WriteTableValues("absent", One); }},
        Call{"UpdateTableValues", [](auto& database) { return database.UpdateTableValues("t", One, "WHERE a=1"); }},
        Call{"PrepareStatement", [](auto& database) { return database.PrepareStatement("SELECT 1").Step(); }},
        Call{"SecondOpen", [](auto& database) { return database.OpenDatabase(":memory:", true); }},
        Call{"CloseDatabaseFailed", [](auto& database) { return !database.CloseDatabase(); }}),
    NameOf);

class ClosedDatabaseApiTest : public testing::TestWithParam<Call> {};

TEST_P(ClosedDatabaseApiTest, IsFoundFirst)
{
    DatabaseApi neverOpened;
    DatabaseApi closedAgain;
    ASSERT_TRUE(closedAgain.OpenDatabase(":memory:", false) && closedAgain.CloseDatabase());
    const SqliteCallRecorder sqlite;

    for (DatabaseApi* const database : {&neverOpened, &closedAgain}) {
        EXPECT_FALSE(GetParam().run(*database));
        EXPECT_THAT(*database, HasError(111, "Database isn't open."));
    }
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

bool Reads(DatabaseApi& database, const std::string& sql)
{
    DbTableData data;
    return database.ReadValues(sql, data) || !data.rows.empty();
}

bool ReadsTable(DatabaseApi& database, const std::string& table)
{
    DbTableData data;
    return database.ReadTableValues(table, data) || !data.rows.empty();
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ClosedDatabaseApiTest,
    testing::Values(Call{"CreateTable",
                         [](auto& database) {
                             return database.CreateTable({"t", Columns, {}});
                         }},
                    Call{"CreateTableWithoutAName", [](auto& database) { return database.CreateTable({}); }},
                    Call{"DropTable", [](auto& database) { return database.DropTable("t"); }},
                    Call{"DropTableWithoutAName", [](auto& database) { return database.DropTable(""); }},
                    Call{"DropTableWithAnApostrophe", [](auto& database) { return database.DropTable("it's"); }},
                    Call{"AlterTable", [](auto& database) { return database.AlterTable("t", "u"); }},
                    Call{"AlterTableWithoutAName", [](auto& database) { return database.AlterTable("", ""); }},
                    Call{"AlterTableWithAnApostrophe", [](auto& database) { return database.AlterTable("it's", ""); }},
                    Call{"SqlQueryBegin", [](auto& database) { return database.SqlQueryBegin("SELECT 1"); }},
                    Call{"SqlQueryBeginWithoutAText", [](auto& database) { return database.SqlQueryBegin(""); }},
                    Call{"ReadValues", [](auto& database) { return Reads(database, "SELECT 1"); }},
                    Call{"ReadValuesWithoutAText", [](auto& database) { return Reads(database, ""); }},
                    Call{"ReadTableValues", [](auto& database) { return ReadsTable(database, "t"); }}),
    NameOf);

TEST(UncheckedDatabaseApiTest, OperationsReachSqliteWithoutAConnection)
{
    const RawFailure failure = FailureOfExec(nullptr, "SELECT 1");
    ASSERT_EQ(failure.code, SQLITE_MISUSE);
    DatabaseApi database;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.Execute("SELECT 1") || database.WriteTableValues("t", One) ||
                 database.UpdateTableValues("t", One, ""));

    EXPECT_THAT(database, HasErrorOf(failure));
    EXPECT_THAT(sqlite.Executed(), ElementsAre("SELECT 1", "INSERT INTO t (a) VALUES (1)", "UPDATE t SET (a)=(1) "));
}

TEST(UncheckedDatabaseApiTest, MissingNameOrQueryIsFoundFirst)
{
    const DbTableDataWrite invalid{{"a", "", "b"}, {{{InvalidCell()}}}};
    DatabaseApi database;
    DbTableRowValues row;
    int result = 0;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));
    EXPECT_FALSE(database.ExistsTable("", result));
    EXPECT_EQ(result, 112);
    EXPECT_THAT(database, HasError(112, "Missing table name."));
    EXPECT_FALSE(database.UpdateTableValues("t", {{}, invalid.rows}, "WHERE id=3"));
    EXPECT_THAT(database, HasError(112, "Missing column names."));
    EXPECT_FALSE(database.WriteTableValues("", invalid));
    EXPECT_THAT(database, HasError(112, "Missing table name."));
    EXPECT_FALSE(database.UpdateTableValues("t", {}, ""));
    EXPECT_THAT(database, HasError(112, "Missing column names."));
    EXPECT_FALSE(database.UpdateTableValues("", {}, ""));
    EXPECT_THAT(database, HasError(112, "Missing table name."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

} // namespace

} // namespace Morvik::sql::tests
