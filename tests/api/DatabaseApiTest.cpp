#include <sql/DatabaseApi.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_abstract_v<IDatabaseApi> && std::has_virtual_destructor_v<IDatabaseApi>);
static_assert(!std::is_copy_constructible_v<IDatabaseApi> && !std::is_copy_assignable_v<IDatabaseApi>);
static_assert(!std::is_copy_constructible_v<DatabaseApi> && !std::is_copy_assignable_v<DatabaseApi>);
static_assert(!std::is_move_constructible_v<DatabaseApi> && !std::is_move_assignable_v<DatabaseApi>);

TEST(DatabaseApiTest, NewFacadeIsClosedWithoutAFailure)
{
    const SqliteCallRecorder sqlite;

    const DatabaseApi database;

    EXPECT_FALSE(database.IsOpen());
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.Succeeded());
    EXPECT_FALSE(database.Failed());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST(DatabaseApiTest, OpensDatabasesInTurnWithOneCallEach)
{
    const TemporaryDirectory directory;
    const std::string first = directory.File("a.db");
    const std::string second = directory.File("b.db");
    const SqliteCallRecorder sqlite;
    DatabaseApi database;

    for (const std::string& path : {first, second}) {
        EXPECT_TRUE(database.OpenDatabase(path, false));
        EXPECT_TRUE(database.IsOpen());
        EXPECT_TRUE(database.Execute("CREATE TABLE t (a)"));
        EXPECT_TRUE(database.CloseDatabase());
        EXPECT_FALSE(database.IsOpen());
    }
    EXPECT_TRUE(database.OpenDatabase(first, true) && database.CloseDatabase() && database.CloseDatabase());

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_open_v2(" + first + ", 6, null)",
                            "sqlite3_exec(handle, CREATE TABLE t (a), null, null)", "sqlite3_close(handle)",
                            "sqlite3_open_v2(" + second + ", 6, null)",
                            "sqlite3_exec(handle, CREATE TABLE t (a), null, null)", "sqlite3_close(handle)",
                            "sqlite3_open_v2(" + first + ", 1, null)", "sqlite3_close(handle)"));
}

// A second OpenDatabase() fails and copies the connection's code, which is 100 or 101 here, to the facade.
TEST(DatabaseApiTest, RowAndDoneAreNotSuccesses)
{
    for (const int code : {SQLITE_ROW, SQLITE_DONE}) {
        DatabaseApi database;
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_open_v2", code, true);
        ASSERT_TRUE(database.OpenDatabase(":memory:", false));
        ASSERT_FALSE(sqlite.Pending());

        EXPECT_FALSE(database.OpenDatabase(":memory:", false));

        EXPECT_THAT(database, HasError(code, ""));
        EXPECT_FALSE(database.Succeeded());
        EXPECT_TRUE(database.Failed());
    }
}

TEST(DatabaseApiTest, DestructionFinalizesTheQueryBeforeItClosesTheDatabase)
{
    auto database = std::make_optional<DatabaseApi>();
    ASSERT_TRUE(database->OpenDatabase(":memory:", false));
    ASSERT_TRUE(database->SqlQueryBegin("SELECT 1 UNION SELECT 2"));
    ASSERT_NE(database->begin(), database->end());
    const SqliteCallRecorder sqlite;

    database.reset();

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_close(handle)"));
}

TEST(IDatabaseApiTest, EveryOperationIsReachedThroughTheInterface)
{
    const std::unique_ptr<IDatabaseApi> database = std::make_unique<DatabaseApi>();
    DbTableData data;
    int result = -1;

    EXPECT_TRUE(database->OpenDatabase(":memory:", false));
    EXPECT_TRUE(database->IsOpen());
    EXPECT_TRUE(database->CreateTable({"t", {{"a"}}, {}}));
    EXPECT_TRUE(database->WriteTableValues("t", {{"a"}, {{{IntegerCell(1)}}}}));
    EXPECT_TRUE(database->Execute("INSERT INTO t VALUES (2)"));
    EXPECT_TRUE(database->UpdateTableValues("t", {{"a"}, {{{IntegerCell(3)}}}}, "WHERE a=1"));
    EXPECT_TRUE(database->AlterTable("t", "u"));
    EXPECT_TRUE(database->ExistsTable("u", result));
    EXPECT_TRUE(database->ReadTableValues("u", data));
    EXPECT_TRUE(database->ReadValues("SELECT max(a) FROM u", data));
    EXPECT_EQ(database->ExistData("u", "WHERE a > 0", result), 2);
    EXPECT_TRUE(database->DropTable("u"));
    EXPECT_TRUE(database->CloseDatabase());
    EXPECT_FALSE(database->IsOpen());

    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(3)"), ElementsAre("0:Integer int(2)"),
                                             ElementsAre("0:Integer int(3)")));
}

using OpenDatabaseApiTest = FacadeTest;

TEST_F(OpenDatabaseApiTest, SecondOpenKeepsTheDatabaseAndCopiesItsError)
{
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.OpenDatabase(directory.File("missing/other.db"), false), Succeeded());

    EXPECT_TRUE(database.IsOpen());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
}

TEST_F(OpenDatabaseApiTest, CloseFailsUntilEveryStatementIsReleased)
{
    const auto busy = FailedWith(SQLITE_BUSY, FailureOfCloseWithAStatement().message);
    BeginWalk();
    {
        const SqliteCallRecorder sqlite;
        EXPECT_THAT(database.CloseDatabase(), busy);
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)", "sqlite3_errmsg(handle)"));
    }
    EXPECT_TRUE(database.IsOpen());

    ASSERT_TRUE(database.ReadValues("SELECT a FROM t", data));
    EXPECT_FALSE(database.CloseDatabase());
    EXPECT_TRUE(database.CloseReadTable());
    {
        const SqlCommand command = database.PrepareStatement("SELECT 1");
        EXPECT_FALSE(database.CloseDatabase());
    }

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_FALSE(database.IsOpen());
}

TEST_F(OpenDatabaseApiTest, ExecuteRunsEveryStatementWithOneCallAndDiscardsRows)
{
    const std::string sql = "CREATE TABLE n (a); INSERT INTO n VALUES (1); SELECT * FROM n; INSERT INTO n VALUES (2);";
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.Execute(sql), Succeeded());

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(handle, " + sql + ", null, null)"));
    EXPECT_THAT(RawRows("SELECT a FROM n"), ElementsAre(ElementsAre("1"), ElementsAre("2")));
}

TEST_F(OpenDatabaseApiTest, PrepareStatementMakesOneCallAndKeepsTheFacadesError)
{
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    EXPECT_THAT(database.PrepareStatement(std::string_view("SELECT 12").substr(0, 8)), HasError(0, ""));

    EXPECT_THAT(database, HasError(112, "Missing command."));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(handle, SELECT 1, 8)", "sqlite3_finalize(statement)"));
}

} // namespace

} // namespace Morvik::sql::tests
