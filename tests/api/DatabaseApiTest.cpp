#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <optional>
#include <type_traits>

#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<DatabaseApi> && !std::is_copy_assignable_v<DatabaseApi>);
static_assert(!std::is_move_constructible_v<DatabaseApi> && !std::is_move_assignable_v<DatabaseApi>);

TEST(DatabaseApiTest, FreshFacadeIsClosedWithoutAFailure)
{
    const SqliteCallRecorder sqlite;

    const DatabaseApi database;

    EXPECT_FALSE(database.IsOpen());
    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.Succeeded());
    EXPECT_FALSE(database.Failed());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST(DatabaseApiTest, IsOpenFromASuccessfulOpenToASuccessfulClose)
{
    const TemporaryDirectory directory;
    DatabaseApi database;

    EXPECT_TRUE(database.OpenDatabase(directory.File("a.db"), false));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_THAT(database, HasError(0, ""));

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_FALSE(database.IsOpen());
    EXPECT_THAT(database, HasError(0, ""));
}

TEST(DatabaseApiTest, ClosedFacadeOpensAnotherDatabase)
{
    const TemporaryDirectory directory;
    DatabaseApi database;
    ASSERT_TRUE(database.OpenDatabase(directory.File("a.db"), false));
    ASSERT_TRUE(database.Execute("CREATE TABLE first (a)"));
    ASSERT_TRUE(database.CloseDatabase());

    EXPECT_TRUE(database.OpenDatabase(directory.File("b.db"), false));
    EXPECT_TRUE(database.Execute("CREATE TABLE second (a)"));

    EXPECT_EQ(RawSqlite(directory.File("a.db")).Value("SELECT group_concat(name) FROM sqlite_master"), "'first'");
    EXPECT_EQ(RawSqlite(directory.File("b.db")).Value("SELECT group_concat(name) FROM sqlite_master"), "'second'");
}

TEST(DatabaseApiTest, OpenAndCloseEachMakeOneCall)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("a.db");
    const SqliteCallRecorder sqlite;
    DatabaseApi database;

    database.OpenDatabase(path, false);
    database.CloseDatabase();
    database.OpenDatabase(path, true);
    database.CloseDatabase();

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_open_v2(" + path + ", 6, null)", "sqlite3_close(handle)",
                                            "sqlite3_open_v2(" + path + ", 1, null)", "sqlite3_close(handle)"));
}

TEST(DatabaseApiTest, FailedOpenTakesOverTheConnectionsRecordAndLeavesTheFacadeClosed)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("missing.db");
    const RawFailure plain = FailureOfOpen(path, SQLITE_OPEN_READONLY);
    DatabaseApi database;

    EXPECT_FALSE(database.OpenDatabase(path, true));

    EXPECT_EQ(plain.code, SQLITE_CANTOPEN);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_TRUE(database.Failed());
    EXPECT_FALSE(database.IsOpen());
}

TEST(DatabaseApiTest, SuccessfulOpenAndCloseKeepTheMessageOfAnEarlierFailure)
{
    const TemporaryDirectory directory;
    DatabaseApi database;
    database.Execute("");

    EXPECT_TRUE(database.OpenDatabase(directory.File("a.db"), false));
    EXPECT_THAT(database, HasError(0, "Missing command."));

    database.Execute("");
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST(DatabaseApiTest, ClosingAClosedFacadeSucceedsWithoutReachingSqlite)
{
    DatabaseApi database;
    database.Execute("");
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.CloseDatabase());

    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

using OpenDatabaseApiTest = OpenFacade;

TEST_F(OpenDatabaseApiTest, SecondOpenKeepsTheFirstDatabase)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.OpenDatabase(directory.File("missing/other.db"), false));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
    EXPECT_TRUE(database.Execute("CREATE TABLE here (a)"));
    EXPECT_EQ(PlainRows("SELECT name FROM sqlite_master").size(), 1U);
}

TEST_F(OpenDatabaseApiTest, SecondOpenReplacesTheMessageByTheConnectionsEmptyOne)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.OpenDatabase(path, false));

    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(OpenDatabaseApiTest, SecondOpenRepeatsTheFailureThatTheConnectionRecordedLast)
{
    const RawFailure plain = FailureOfCloseWithAStatement();
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1"));
    ASSERT_FALSE(database.CloseDatabase());
    ASSERT_TRUE(database.Execute("SELECT 1"));

    EXPECT_FALSE(database.OpenDatabase(path, false));

    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_TRUE(database.IsOpen());
}

class DatabaseApiStrictSuccessTest : public testing::TestWithParam<int> {};

// A facade's code becomes 100 or 101 without a failure in only one way: OpenDatabase() repeats the code of its
// connection.
TEST_P(DatabaseApiStrictSuccessTest, RowAndDoneAreNoSuccesses)
{
    const TemporaryDirectory directory;
    DatabaseApi database;
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_open_v2", GetParam(), true);
    ASSERT_TRUE(database.OpenDatabase(directory.File("a.db"), false));
    ASSERT_FALSE(sqlite.Pending());

    EXPECT_FALSE(database.OpenDatabase(directory.File("a.db"), false));

    EXPECT_THAT(database, HasError(GetParam(), ""));
    EXPECT_FALSE(database.Succeeded());
    EXPECT_TRUE(database.Failed());
}

INSTANTIATE_TEST_SUITE_P(Codes, DatabaseApiStrictSuccessTest, testing::Values(SQLITE_ROW, SQLITE_DONE),
                         [](const auto& code) { return code.param == SQLITE_ROW ? "Row" : "Done"; });

TEST_F(OpenDatabaseApiTest, CloseFailsWhileAQueryIsOpenAndTheDatabaseStaysOpen)
{
    const RawFailure plain = FailureOfCloseWithAStatement();
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1"));
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.CloseDatabase());

    EXPECT_EQ(plain.code, SQLITE_BUSY);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)", "sqlite3_errmsg(handle)"));
    EXPECT_TRUE(database.CloseReadTable());
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_FALSE(database.IsOpen());
}

TEST_F(OpenDatabaseApiTest, FailedCloseLeavesTheQueryWhereItWas)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1 UNION SELECT 2"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));
    ASSERT_FALSE(database.CloseDatabase());
    ASSERT_TRUE(database.Execute("SELECT 0"));

    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_EQ(std::get<int>(row.cells.at(0).value), 2);
}

TEST(DatabaseApiTest, DestructionFinalizesTheQueryBeforeItClosesTheDatabase)
{
    const TemporaryDirectory directory;
    auto database = std::make_optional<DatabaseApi>();
    ASSERT_TRUE(database->OpenDatabase(directory.File("a.db"), false));
    ASSERT_TRUE(database->SqlQueryBegin("SELECT 1 UNION SELECT 2"));
    ASSERT_NE(database->begin(), database->end());
    const SqliteCallRecorder sqlite;

    database.reset();

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_finalize(statement)", "sqlite3_close(handle)"));
}

TEST(DatabaseApiTest, DestructionWithoutAQueryOnlyClosesTheDatabase)
{
    const TemporaryDirectory directory;
    auto database = std::make_optional<DatabaseApi>();
    ASSERT_TRUE(database->OpenDatabase(directory.File("a.db"), false));
    const SqliteCallRecorder sqlite;

    database.reset();

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)"));
}

} // namespace

} // namespace Morvik::sql::tests
