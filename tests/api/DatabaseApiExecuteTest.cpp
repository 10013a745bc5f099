#include <string_view>

#include "api/FacadeTest.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using DatabaseApiExecuteTest = FacadeTest;

TEST_F(DatabaseApiExecuteTest, RunsEveryStatementWithOneCallAndDiscardsRows)
{
    const std::string sql = "CREATE TABLE n (a); INSERT INTO n VALUES (1); SELECT * FROM n; INSERT INTO n VALUES (2);";
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(database.Execute(sql));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_exec(handle, " + sql + ", null, null)"));
    EXPECT_THAT(RawRows("SELECT a FROM n"), ElementsAre(ElementsAre("1"), ElementsAre("2")));
}

TEST_F(DatabaseApiExecuteTest, EmptyTextIsRejectedWithoutReachingSqlite)
{
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.Execute(""));

    EXPECT_THAT(database, HasError(112, "Missing command."));
    EXPECT_TRUE(database.Failed());
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_TRUE(database.Execute(" ")) << "a blank is a text";
}

TEST_F(DatabaseApiExecuteTest, PreparedStatementBindsAndStepsOnTheFacadesConnection)
{
    SqlCommand insert = database.PrepareStatement("INSERT INTO t VALUES (?, ?)");

    EXPECT_TRUE(insert.BindInteger(1, 7) && insert.BindText(2, "O'Brien") && insert.Step());

    EXPECT_THAT(insert, HasError(101, ""));
    EXPECT_THAT(RawRows("SELECT * FROM t WHERE a = 7"), ElementsAre(ElementsAre("7", "'O''Brien'")));
}

TEST_F(DatabaseApiExecuteTest, PrepareStatementMakesOneCallWithTheGivenText)
{
    const SqliteCallRecorder sqlite;
    EXPECT_THAT(database.PrepareStatement(std::string_view("SELECT 12").substr(0, 8)), HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(handle, SELECT 1, 8)", "sqlite3_finalize(statement)"));
}

TEST_F(DatabaseApiExecuteTest, PrepareStatementNeverChangesTheFacadesError)
{
    FailWithMissingCommand();
    EXPECT_THAT(database.PrepareStatement("SELECT 1"), HasError(0, ""));
    EXPECT_THAT(database.PrepareStatement("nonsense"), HasError(1, ""));
    EXPECT_THAT(database, HasError(112, "Missing command."));

    ASSERT_TRUE(database.Execute("SELECT 1"));
    EXPECT_THAT(database.PrepareStatement("SELECT * FROM missing"), HasError(1, ""));
    EXPECT_THAT(database, HasError(0, "Missing command."));
}

} // namespace

} // namespace Morvik::sql::tests
