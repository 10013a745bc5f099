#include <sqlite3.h>

#include <functional>
#include <ostream>
#include <string>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The rules for the error and the walk that hold for every operation of the facade.

const DbTableDataWrite One{{"a"}, {{{IntegerCell(1)}}}};

struct NamedOperation {
    const char* name;
    std::function<bool(DatabaseApi&)> run;

    friend void PrintTo(const NamedOperation& operation, std::ostream* stream) { *stream << operation.name; }
};

std::string NameOf(const testing::TestParamInfo<NamedOperation>& operation)
{
    return operation.param.name;
}

bool IsNoTable(DatabaseApi& database, const std::string& table)
{
    int result = -1;
    return !database.ExistsTable(table, result) && result == 0;
}

bool IsTable(DatabaseApi& database, const std::string& table)
{
    int result = -1;
    return database.ExistsTable(table, result) && result == 0;
}

bool HasCount(DatabaseApi& database, const std::string& table, int count)
{
    int result = -1;
    return database.ExistData(table, "", result) == count && result == 0;
}

class SuccessTest : public FacadeTest, public testing::WithParamInterface<NamedOperation> {};

TEST_P(SuccessTest, ResetsTheCodeAndKeepsTheEarlierMessage)
{
    FailWithMissingCommand();

    EXPECT_TRUE(GetParam().run(database));

    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_TRUE(database.Succeeded());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, SuccessTest,
    testing::Values(
        NamedOperation{"CreateTable",
                       [](auto& database) {
                           return database.CreateTable({"made", {{"a"}}, {}});
                       }},
        NamedOperation{"ExistsTable", [](auto& database) { return IsTable(database, "t"); }},
        NamedOperation{"ExistsTableAbsent", [](auto& database) { return IsNoTable(database, "absent"); }},
        NamedOperation{"DropTable", [](auto& database) { return database.DropTable("t"); }},
        NamedOperation{"DropTableAbsent", [](auto& database) { return database.DropTable("absent"); }},
        NamedOperation{"AlterTable", [](auto& database) { return database.AlterTable("t", "renamed"); }},
        NamedOperation{"ExistData", [](auto& database) { return HasCount(database, "t", 3); }},
        NamedOperation{"Execute", [](auto& database) { return database.Execute("CREATE TABLE made (a)"); }},
        NamedOperation{"WriteTableValues", [](auto& database) { return database.WriteTableValues("t", One); }},
        NamedOperation{"UpdateTableValues", [](auto& database) { return database.UpdateTableValues("t", One, ""); }},
        NamedOperation{"SqlQueryBegin", [](auto& database) { return database.SqlQueryBegin("SELECT 1"); }},
        NamedOperation{"CloseReadTable", [](auto& database) { return database.CloseReadTable(); }},
        NamedOperation{"CloseDatabase", [](auto& database) { return database.CloseDatabase(); }},
        NamedOperation{"CloseDatabaseTwice",
                       [](auto& database) { return database.CloseDatabase() && database.CloseDatabase(); }},
        NamedOperation{
            "OpenDatabase",
            [](auto& database) { return database.CloseDatabase() && database.OpenDatabase(":memory:", false); }}),
    NameOf);

class UndisturbedWalkTest : public FacadeTest, public testing::WithParamInterface<NamedOperation> {};

TEST_P(UndisturbedWalkTest, StaysOnItsRow)
{
    BeginWalk();

    EXPECT_TRUE(GetParam().run(database));

    ASSERT_TRUE(database.Execute("SELECT 0")) << "a failure would end the walk";
    EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)"));
}

INSTANTIATE_TEST_SUITE_P(
    Operations, UndisturbedWalkTest,
    testing::Values(
        NamedOperation{"CreateTable",
                       [](auto& database) {
                           return database.CreateTable({"t", {{"a"}}, {}});
                       }},
        NamedOperation{"CreateTableFailed", [](auto& database) { return !database.CreateTable({}); }},
        NamedOperation{"ExistsTable", [](auto& database) { return IsTable(database, "t"); }},
        NamedOperation{"ExistsTableAbsent", [](auto& database) { return IsNoTable(database, "absent"); }},
        NamedOperation{"DropTableAbsent", [](auto& database) { return database.DropTable("absent"); }},
        NamedOperation{"AlterTableFailed", [](auto& database) { return !database.AlterTable("absent", "x"); }},
        NamedOperation{"ExistDataAbsent", [](auto& database) { return HasCount(database, "absent", 0); }},
        NamedOperation{"ExecuteFailed", [](auto& database) { return !database.Execute("nonsense"); }},
        NamedOperation{"WriteTableValues", [](auto& database) { return database.WriteTableValues("other", One); }},
        NamedOperation{"WriteTableValuesFailed",
                       [](auto& database) { return !database.WriteTableValues("absent", One); }},
        NamedOperation{"UpdateTableValues",
                       [](auto& database) { return database.UpdateTableValues("t", One, "WHERE a=1"); }},
        NamedOperation{"PrepareStatement", [](auto& database) { return database.PrepareStatement("SELECT 1").Step(); }},
        NamedOperation{"SecondOpen", [](auto& database) { return database.OpenDatabase(":memory:", true); }},
        NamedOperation{"CloseDatabaseFailed", [](auto& database) { return !database.CloseDatabase(); }}),
    NameOf);

class ClosedDatabaseApiTest : public testing::TestWithParam<NamedOperation> {};

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
    testing::Values(
        NamedOperation{"CreateTable",
                       [](auto& database) {
                           return database.CreateTable({"t", {{"a"}}, {}});
                       }},
        NamedOperation{"CreateTableWithoutAName", [](auto& database) { return database.CreateTable({}); }},
        NamedOperation{"DropTable", [](auto& database) { return database.DropTable("t"); }},
        NamedOperation{"DropTableWithoutAName", [](auto& database) { return database.DropTable(""); }},
        NamedOperation{"DropTableWithAnApostrophe", [](auto& database) { return database.DropTable("it's"); }},
        NamedOperation{"AlterTable", [](auto& database) { return database.AlterTable("t", "u"); }},
        NamedOperation{"AlterTableWithoutAName", [](auto& database) { return database.AlterTable("", ""); }},
        NamedOperation{"AlterTableWithAnApostrophe", [](auto& database) { return database.AlterTable("it's", ""); }},
        NamedOperation{"SqlQueryBegin", [](auto& database) { return database.SqlQueryBegin("SELECT 1"); }},
        NamedOperation{"SqlQueryBeginWithoutAText", [](auto& database) { return database.SqlQueryBegin(""); }},
        NamedOperation{"ReadValues", [](auto& database) { return Reads(database, "SELECT 1"); }},
        NamedOperation{"ReadValuesWithoutAText", [](auto& database) { return Reads(database, ""); }},
        NamedOperation{"ReadTableValues", [](auto& database) { return ReadsTable(database, "t"); }}),
    NameOf);

TEST(UncheckedDatabaseApiTest, OperationsReportWhatSqliteReturnsWithoutAConnection)
{
    const RawFailure executed = FailureOfExec(nullptr, "SELECT 1");
    const RawFailure prepared = FailureOfPrepare(nullptr, TableExistsQuery("t"));
    ASSERT_EQ(executed.code, SQLITE_MISUSE);
    ASSERT_EQ(prepared.code, SQLITE_MISUSE);
    DatabaseApi database;
    int result = 0;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.Execute("") || database.Execute("SELECT 1"));
    EXPECT_THAT(database, HasErrorOf(executed));
    EXPECT_FALSE(database.WriteTableValues("t", One));
    EXPECT_THAT(database, HasErrorOf(executed));
    EXPECT_FALSE(database.UpdateTableValues("t", One, ""));
    EXPECT_THAT(database, HasErrorOf(executed));
    EXPECT_THAT(sqlite.Executed(), ElementsAre("SELECT 1", "INSERT INTO t (a) VALUES (1)", "UPDATE t SET (a)=(1) "));

    EXPECT_FALSE(database.ExistsTable("t", result));
    EXPECT_EQ(result, prepared.code);
    EXPECT_THAT(database, HasErrorOf(prepared));
    EXPECT_EQ(database.ExistData("t", "", result), 0);
    EXPECT_EQ(result, prepared.code);
    EXPECT_THAT(database, HasErrorOf(prepared));
    EXPECT_FALSE(database.IsOpen());
}

TEST(UncheckedDatabaseApiTest, MissingNameOrQueryIsFoundWithoutAConnection)
{
    DatabaseApi database;
    DbTableRowValues row;
    int result = 0;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.ReadNextRow(row));
    EXPECT_THAT(database, HasError(111, "Table isn't open."));
    EXPECT_FALSE(database.ExistsTable("", result));
    EXPECT_EQ(result, 112);
    EXPECT_THAT(database, HasError(112, "Missing table name."));
    EXPECT_FALSE(database.UpdateTableValues("t", {}, ""));
    EXPECT_THAT(database, HasError(112, "Missing column names."));
    EXPECT_FALSE(database.WriteTableValues("", {}));
    EXPECT_THAT(database, HasError(112, "Missing table name."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST(UncheckedDatabaseApiTest, PrepareStatementLeavesTheFailureInTheStatement)
{
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v2(nullptr, "SELECT 1", 8, &statement, nullptr);
    const DatabaseApi database;

    EXPECT_NE(code, 0);
    EXPECT_THAT(database.PrepareStatement("SELECT 1"), HasError(code, ""));
    EXPECT_THAT(database, HasError(0, ""));
}

} // namespace

} // namespace Morvik::sql::tests
