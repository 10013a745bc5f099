#include <functional>
#include <string>
#include <vector>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The rules for the error and the walk that hold for every operation of the facade.

const DbTableDataWrite One{{"a"}, {{{IntegerCell(1)}}}};
const DbTableDefinition TableT{"t", {{"a"}}, {}};

struct FacadeCall {
    const char* name;
    std::function<bool(DatabaseApi&)> run;
};

using FacadeCalls = std::vector<FacadeCall>;

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

const FacadeCalls SuccessesBesideAWalk{
    {"CreateTable", [](auto& database) { return database.CreateTable(TableT); }},
    {"ExistsTable", [](auto& database) { return Exists(database, "t", true); }},
    {"ExistsTable of an absent table", [](auto& database) { return Exists(database, "absent", false); }},
    {"DropTable of an absent table", [](auto& database) { return database.DropTable("absent"); }},
    {"ExistData of an absent table", [](auto& database) { return HasCount(database, "absent", 0); }},
    {"Execute", [](auto& database) { return database.Execute("SELECT 1"); }},
    {"Execute of a blank", [](auto& database) { return database.Execute(" "); }},
    {"WriteTableValues", [](auto& database) { return database.WriteTableValues("other", One); }},
    {"UpdateTableValues", [](auto& database) { return database.UpdateTableValues("t", One, "WHERE a=1"); }}};

const FacadeCalls OtherSuccesses{
    {"ExistData", [](auto& database) { return HasCount(database, "t", 3); }},
    {"AlterTable", [](auto& database) { return database.AlterTable("t", "renamed"); }},
    {"DropTable", [](auto& database) { return database.DropTable("renamed"); }},
    {"SqlQueryBegin", [](auto& database) { return database.SqlQueryBegin("SELECT 1"); }},
    {"CloseReadTable", [](auto& database) { return database.CloseReadTable(); }},
    {"CloseDatabase", [](auto& database) { return database.CloseDatabase(); }},
    {"CloseDatabase again", [](auto& database) { return database.CloseDatabase(); }},
    {"OpenDatabase", [](auto& database) { return database.OpenDatabase(":memory:", false); }}};

const FacadeCalls FailuresBesideAWalk{
    {"CreateTable", [](auto& database) { return database.CreateTable({}); }},
    {"AlterTable", [](auto& database) { return database.AlterTable("absent", "x"); }},
    {"Execute", [](auto& database) { return database.Execute("nonsense"); }},
    {"WriteTableValues", [](auto& database) { return database.WriteTableValues("absent", One); }},
    {"PrepareStatement", [](auto& database) { return database.PrepareStatement("nonsense").Step(); }},
    {"CloseDatabase", [](auto& database) { return database.CloseDatabase(); }}};

using DatabaseApiErrorTest = FacadeTest;

TEST_F(DatabaseApiErrorTest, SuccessResetsTheCodeAndKeepsTheMessage)
{
    for (const FacadeCalls& calls : {SuccessesBesideAWalk, OtherSuccesses}) {
        for (const auto& [name, run] : calls) {
            SCOPED_TRACE(name);
            FailWithMissingCommand();

            EXPECT_TRUE(run(database));

            EXPECT_THAT(database, HasError(0, "Missing command."));
            EXPECT_TRUE(database.Succeeded());
        }
    }
}

TEST_F(DatabaseApiErrorTest, WalkStaysOnItsRowDuringOtherOperations)
{
    for (const bool succeeds : {true, false}) {
        for (const auto& [name, run] : succeeds ? SuccessesBesideAWalk : FailuresBesideAWalk) {
            SCOPED_TRACE(name);
            BeginWalk();

            EXPECT_EQ(run(database), succeeds);

            ASSERT_TRUE(database.Execute("SELECT 0")) << "a failure would end the walk";
            EXPECT_THAT(NextRow(), ElementsAre("0:Integer int(2)"));
        }
    }
}

TEST_F(DatabaseApiErrorTest, MissingArgumentIsFoundWithoutACall)
{
    const DbTableDataWrite invalid{{"a", "", "b"}, {{{InvalidCell()}}}};
    const auto missingName = FailedWith(112, "Missing table name.");
    const auto missingColumns = FailedWith(112, "Missing column names.");
    const auto missingQuery = FailedWith(112, "Missing query SQL statement.");
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.CreateTable({}), missingName);
    EXPECT_THAT(database.AlterTable("", "x"), FailedWith(113, "No table exists: "));
    EXPECT_THAT(database.DropTable(""), missingName);
    EXPECT_THAT(database.SqlQueryBegin(""), missingQuery);
    EXPECT_THAT(database.Execute(""), FailedWith(112, "Missing command."));
    EXPECT_THAT(database.ReadValues("", data), missingQuery);
    EXPECT_THAT(database.ExistsTable("", result), missingName);
    EXPECT_THAT(database.UpdateTableValues("t", {{}, invalid.rows}, "WHERE id=3"), missingColumns);
    EXPECT_THAT(database.WriteTableValues("", invalid), missingName);
    EXPECT_THAT(database.UpdateTableValues("t", {}, ""), missingColumns);
    EXPECT_THAT(database.UpdateTableValues("", {}, ""), missingName);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

class ClosedDatabaseApiTest : public FacadeTest {
protected:
    ClosedDatabaseApiTest() { EXPECT_TRUE(database.CloseDatabase()); }
};

TEST_F(ClosedDatabaseApiTest, IsRejectedBeforeAMissingArgument)
{
    const FacadeCalls rejected{
        {"CreateTable", [](auto& closed) { return closed.CreateTable(TableT); }},
        {"CreateTable without a name", [](auto& closed) { return closed.CreateTable({}); }},
        {"DropTable without a name", [](auto& closed) { return closed.DropTable(""); }},
        {"DropTable with an apostrophe", [](auto& closed) { return closed.DropTable("it's"); }},
        {"AlterTable without a name", [](auto& closed) { return closed.AlterTable("", ""); }},
        {"AlterTable with an apostrophe", [](auto& closed) { return closed.AlterTable("it's", ""); }},
        {"SqlQueryBegin without a text", [](auto& closed) { return closed.SqlQueryBegin(""); }},
        {"ReadValues without a text", [&](auto& closed) { return closed.ReadValues("", data); }},
        {"ReadValues", [&](auto& closed) { return closed.ReadValues("SELECT 1", data); }}};
    const SqliteCallRecorder sqlite;

    for (const auto& [name, run] : rejected) {
        FailWithMissingCommand();
        EXPECT_THAT(run(database), FailedWith(111, "Database isn't open.")) << name;
    }
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(ClosedDatabaseApiTest, ExecuteAndWritesReachSqliteWithoutAConnection)
{
    const RawFailure failure = FailureOfExec(nullptr, "SELECT 1");
    ASSERT_EQ(failure.code, SQLITE_MISUSE);
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.Execute("SELECT 1"), FailedWith(failure));
    EXPECT_THAT(database.ExistsTable("", result), FailedWith(112, "Missing table name."));
    EXPECT_THAT(database.WriteTableValues("t", One), FailedWith(failure));
    EXPECT_THAT(database.UpdateTableValues("t", {}, ""), FailedWith(112, "Missing column names."));
    EXPECT_THAT(database.UpdateTableValues("t", One, ""), FailedWith(failure));
    EXPECT_THAT(sqlite.Executed(), ElementsAre("SELECT 1", "INSERT INTO t (a) VALUES (1)", "UPDATE t SET (a)=(1) "));
}

} // namespace

} // namespace Morvik::sql::tests
