#include <sql/DatabaseApi.h>

#include <sqlite3.h>

#include <filesystem>
#include <optional>
#include <type_traits>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
    EXPECT_EQ(RawSqlite(second).Value("SELECT name FROM sqlite_master"), "'t'");
}

using OpenDatabaseApiTest = FacadeTest;

TEST_F(OpenDatabaseApiTest, SecondOpenKeepsTheDatabaseAndCopiesItsMessage)
{
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.OpenDatabase(directory.File("missing/other.db"), false));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
    EXPECT_TRUE(database.Execute("CREATE TABLE here (a)"));
    EXPECT_EQ(RawRows("SELECT * FROM pragma_table_info('here')").size(), 1U);
}

class DatabaseApiStrictSuccessTest : public testing::TestWithParam<int> {};

// A facade's code becomes 100 or 101 without a failure in only one way: OpenDatabase() repeats the code of its
// connection.
TEST_P(DatabaseApiStrictSuccessTest, RowAndDoneAreNoSuccesses)
{
    DatabaseApi database;
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_open_v2", GetParam(), true);
    ASSERT_TRUE(database.OpenDatabase(":memory:", false));
    ASSERT_FALSE(sqlite.Pending());

    EXPECT_FALSE(database.OpenDatabase(":memory:", false));

    EXPECT_THAT(database, HasError(GetParam(), ""));
    EXPECT_FALSE(database.Succeeded());
    EXPECT_TRUE(database.Failed());
}

INSTANTIATE_TEST_SUITE_P(Codes, DatabaseApiStrictSuccessTest, testing::Values(SQLITE_ROW, SQLITE_DONE),
                         [](const auto& code) { return code.param == SQLITE_ROW ? "Row" : "Done"; });

TEST_F(OpenDatabaseApiTest, CloseFailsWhileAnyStatementIsHeld)
{
    const RawFailure busy = FailureOfCloseWithAStatement();
    BeginWalk();
    {
        const SqliteCallRecorder sqlite;
        EXPECT_FALSE(database.CloseDatabase());
        EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)", "sqlite3_errmsg(handle)"));
    }
    EXPECT_EQ(busy.code, SQLITE_BUSY);
    EXPECT_THAT(database, HasErrorOf(busy));
    EXPECT_TRUE(database.IsOpen());

    ASSERT_TRUE(database.ReadValues("SELECT a FROM t", data));
    EXPECT_FALSE(database.CloseDatabase());
    EXPECT_THAT(database, HasErrorOf(busy));
    EXPECT_TRUE(database.CloseReadTable());
    {
        const SqlCommand command = database.PrepareStatement("SELECT 1");
        EXPECT_FALSE(database.CloseDatabase());
        EXPECT_THAT(database, HasErrorOf(busy));
    }

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_FALSE(database.IsOpen());
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

} // namespace

} // namespace Morvik::sql::tests
