#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string_view>

#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using DatabaseApiExecuteTest = OpenFacade;

TEST_F(DatabaseApiExecuteTest, RunsEveryStatementWithOneCallAndDiscardsRows)
{
    const std::string sql = "CREATE TABLE t (a); INSERT INTO t VALUES (1); SELECT * FROM t; INSERT INTO t VALUES (2);";
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.Execute(sql));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(handle, " + sql + ", null, null)"));
    EXPECT_THAT(PlainRows("SELECT a FROM t"), ElementsAre(ElementsAre("1"), ElementsAre("2")));
}

TEST_F(DatabaseApiExecuteTest, EmptyTextIsRejectedWithoutReachingSqlite)
{
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.Execute(""));

    EXPECT_THAT(database, HasError(112, "Missing command."));
    EXPECT_TRUE(database.Failed());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(DatabaseApiExecuteTest, BlankTextIsNoMissingCommand)
{
    EXPECT_TRUE(database.Execute(" "));

    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DatabaseApiExecuteTest, SuccessResetsTheCodeAndKeepsTheMessage)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.Execute("CREATE TABLE t (a)"));

    EXPECT_THAT(database, HasError(0, "Missing command."));
    EXPECT_TRUE(database.Succeeded());
}

TEST_F(DatabaseApiExecuteTest, FailureTakesOverSqlitesCodeAndText)
{
    const RawFailure plain = PlainRejection("INSERT INTO missing VALUES (1)");
    FailWithMissingCommand();
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.Execute("INSERT INTO missing VALUES (1)"));

    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(handle, INSERT INTO missing VALUES (1), null, null)",
                                            "sqlite3_free(memory)"));
}

TEST_F(DatabaseApiExecuteTest, StatementsBeforeTheFailingOneStayDone)
{
    EXPECT_FALSE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1); nonsense; INSERT INTO t VALUES (2)"));

    EXPECT_THAT(PlainRows("SELECT a FROM t"), ElementsAre(ElementsAre("1")));
}

TEST_F(DatabaseApiExecuteTest, FailureLeavesTheQueryWhereItWas)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1 UNION SELECT 2"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_FALSE(database.Execute("nonsense"));

    ASSERT_TRUE(database.Execute("SELECT 0"));
    ASSERT_TRUE(database.ReadNextRow(row));
    EXPECT_EQ(std::get<int>(row.cells.at(0).value), 2);
}

TEST(DatabaseApiClosedTest, ExecuteAnswersWhatSqliteAnswersWithoutAConnection)
{
    const RawFailure plain = FailureOfExec(nullptr, "SELECT 1");
    DatabaseApi database;
    database.Execute("");
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.Execute("SELECT 1"));

    EXPECT_EQ(plain.code, SQLITE_MISUSE);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(null, SELECT 1, null, null)"));
    EXPECT_FALSE(database.IsOpen());
}

TEST_F(DatabaseApiExecuteTest, PreparedStatementBindsAndStepsOnTheFacadesConnection)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE t (a, b)"));
    SqlCommand insert = database.PrepareStatement("INSERT INTO t VALUES (?, ?)");

    EXPECT_TRUE(insert.BindInteger(1, 7));
    EXPECT_TRUE(insert.BindText(2, "O'Brien"));
    EXPECT_TRUE(insert.Step());

    EXPECT_THAT(insert, HasError(101, ""));
    EXPECT_THAT(PlainRows("SELECT * FROM t"), ElementsAre(ElementsAre("7", "'O''Brien'")));
}

TEST_F(DatabaseApiExecuteTest, PrepareStatementMakesOneCallAndReadsOnlyTheGivenText)
{
    const std::string_view text = std::string_view("SELECT 12").substr(0, 8);
    const SqliteCallRecorder sqlite;

    {
        const SqlCommand command = database.PrepareStatement(text);
        EXPECT_THAT(command, HasError(0, ""));
    }

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(handle, SELECT 1, 8)", "sqlite3_finalize(statement)"));
}

TEST_F(DatabaseApiExecuteTest, PrepareStatementNeverTouchesTheFacadesRecord)
{
    FailWithMissingCommand();

    const SqlCommand good = database.PrepareStatement("SELECT 1");
    EXPECT_THAT(good, HasError(0, ""));
    EXPECT_THAT(database, HasError(112, "Missing command."));

    const SqlCommand bad = database.PrepareStatement("nonsense");
    EXPECT_THAT(bad, HasError(1, ""));
    EXPECT_THAT(database, HasError(112, "Missing command."));

    ASSERT_TRUE(database.Execute("SELECT 1"));
    const SqlCommand worse = database.PrepareStatement("SELECT * FROM missing");
    EXPECT_THAT(worse, HasError(1, ""));
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(DatabaseApiExecuteTest, ARejectedStatementIsReturnedEmpty)
{
    SqlCommand command = database.PrepareStatement("nonsense");

    EXPECT_FALSE(command.Step());
    EXPECT_TRUE(command.Prepare("SELECT 1"));
}

TEST(DatabaseApiClosedTest, PrepareStatementLeavesTheFailureInTheStatement)
{
    sqlite3_stmt* statement = nullptr;
    const int plain = sqlite3_prepare_v2(nullptr, "SELECT 1", 8, &statement, nullptr);
    const DatabaseApi database;

    const SqlCommand command = database.PrepareStatement("SELECT 1");

    EXPECT_NE(plain, 0);
    EXPECT_THAT(command, HasError(plain, ""));
    EXPECT_THAT(database, HasError(0, ""));
}

TEST_F(DatabaseApiExecuteTest, CloseFailsWhileAPreparedStatementIsAlive)
{
    const RawFailure plain = FailureOfCloseWithAStatement();
    {
        const SqlCommand command = database.PrepareStatement("SELECT 1");

        EXPECT_FALSE(database.CloseDatabase());
        EXPECT_THAT(database, HasError(plain.code, plain.message));
        EXPECT_TRUE(database.IsOpen());
    }

    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_FALSE(database.IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
