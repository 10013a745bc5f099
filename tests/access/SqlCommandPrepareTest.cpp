#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>
#include <string_view>

#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class SqlCommandPrepareTest : public WithOpenDatabase {
protected:
    // Leaves a failure's message in the record, so that a test can check whether it stays.
    std::string LeaveMessage()
    {
        EXPECT_FALSE(command.Execute("nonsense"));
        EXPECT_NE(command.GetLastErrorMsg(), "");
        return command.GetLastErrorMsg();
    }

    SqlCommand command{database};
};

struct ByteCountCase {
    const char* name;
    std::string_view sql;
    const char* call;
};

class SqlCommandByteCountTest : public SqlCommandPrepareTest, public testing::WithParamInterface<ByteCountCase> {};

TEST_P(SqlCommandByteCountTest, IsTheSizeOfTheViewUnlessItEndsInAZeroByte)
{
    const SqliteCallRecorder sqlite;

    const bool prepared = command.Prepare(GetParam().sql);

    EXPECT_TRUE(prepared);
    EXPECT_THAT(sqlite.Calls(), ElementsAre(GetParam().call));
    EXPECT_THAT(command, HasError(0, ""));
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 12);
}

INSTANTIATE_TEST_SUITE_P(
    Views, SqlCommandByteCountTest,
    testing::Values(ByteCountCase{"Whole", "SELECT 12"sv, "sqlite3_prepare_v2(handle, SELECT 12, 9)"},
                    ByteCountCase{"PartOfALongerText", "SELECT 1234"sv.substr(0, 9),
                                  "sqlite3_prepare_v2(handle, SELECT 12, 9)"},
                    ByteCountCase{"WithItsTerminator", "SELECT 12\0"sv, "sqlite3_prepare_v2(handle, SELECT 12, -1)"},
                    ByteCountCase{"EndingInAZeroByteBehindAnother", "SELECT 12\0nonsense\0"sv,
                                  "sqlite3_prepare_v2(handle, SELECT 12, -1)"}),
    [](const auto& byteCountCase) { return byteCountCase.param.name; });

TEST_F(SqlCommandPrepareTest, OnlyTheFirstStatementIsCompiled)
{
    const bool prepared = command.Prepare("CREATE TABLE t(a); nonsense");

    EXPECT_TRUE(prepared);
    EXPECT_TRUE(command.Step());
    EXPECT_THAT(RawSqlite(path).Rows("SELECT name FROM sqlite_master"), ElementsAre(ElementsAre("'t'")));
}

struct EmptyCase {
    const char* name;
    std::string_view sql;
};

class SqlCommandEmptyTextTest : public SqlCommandPrepareTest, public testing::WithParamInterface<EmptyCase> {};

TEST_P(SqlCommandEmptyTextTest, SucceedsAndHoldsNoStatement)
{
    const std::string message = LeaveMessage();

    const bool prepared = command.Prepare(GetParam().sql);

    EXPECT_TRUE(prepared);
    EXPECT_THAT(command, HasError(0, message));
    EXPECT_FALSE(command.Step());
    EXPECT_THAT(command, HasError(0, message));
    EXPECT_TRUE(command.Prepare("SELECT 1"));
}

INSTANTIATE_TEST_SUITE_P(Texts, SqlCommandEmptyTextTest,
                         testing::Values(EmptyCase{"Empty", ""sv}, EmptyCase{"OneZeroByte", "\0"sv},
                                         EmptyCase{"Blanks", " \n\t"sv}, EmptyCase{"Comment", "-- nothing"sv}),
                         [](const auto& emptyCase) { return emptyCase.param.name; });

TEST_F(SqlCommandPrepareTest, EmptyTextIsPassedWithItsSize)
{
    const SqliteCallRecorder sqlite;

    command.Prepare("");

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(handle, , 0)"));
}

TEST_F(SqlCommandPrepareTest, ViewWithoutDataIsAMisuse)
{
    const std::string message = LeaveMessage();
    const SqliteCallRecorder sqlite;

    const bool prepared = command.Prepare(std::string_view());

    EXPECT_FALSE(prepared);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(handle, null, 0)"));
    EXPECT_THAT(command, HasError(SQLITE_MISUSE, message));
}

TEST_F(SqlCommandPrepareTest, ClosedConnectionIsHandedToSqliteAndRefusedByIt)
{
    SqlDatabase closed;
    SqlCommand onClosed(closed);
    const SqliteCallRecorder sqlite;

    const bool prepared = onClosed.Prepare("SELECT 1");

    EXPECT_FALSE(prepared);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(null, SELECT 1, 8)"));
    EXPECT_THAT(onClosed, HasError(SQLITE_MISUSE, ""));
}

TEST_F(SqlCommandPrepareTest, FailedPrepareOfAFreshCommandHasACodeAndNoMessage)
{
    const SqliteCallRecorder sqlite;

    const bool prepared = command.Prepare("nonsense");

    EXPECT_FALSE(prepared);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_prepare_v2(handle, nonsense, 8)"));
    EXPECT_THAT(command, HasError(SQLITE_ERROR, ""));
}

TEST_F(SqlCommandPrepareTest, FailedPrepareKeepsTheEarlierMessage)
{
    const std::string message = LeaveMessage();

    const bool prepared = command.Prepare("SELECT * FROM missing");

    EXPECT_FALSE(prepared);
    EXPECT_THAT(command, HasError(SQLITE_ERROR, message));
}

TEST_F(SqlCommandPrepareTest, SuccessfulPrepareKeepsTheEarlierMessage)
{
    const std::string message = LeaveMessage();

    const bool prepared = command.Prepare("SELECT 1");

    EXPECT_TRUE(prepared);
    EXPECT_THAT(command, HasError(0, message));
}

TEST_F(SqlCommandPrepareTest, SecondPrepareLeavesTheFirstStatementAndTheRecordAlone)
{
    const std::string message = LeaveMessage();
    command.Prepare("SELECT 12");
    command.BindInteger(5, 5);
    const SqliteCallRecorder sqlite;

    const bool prepared = command.Prepare("SELECT 34");

    EXPECT_FALSE(prepared);
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(command, HasError(SQLITE_RANGE, message));
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 12);
}

TEST_F(SqlCommandPrepareTest, PreparesAnewAfterFinalize)
{
    command.Prepare("SELECT 12");
    command.Finalize();

    const bool prepared = command.Prepare("SELECT 34");

    EXPECT_TRUE(prepared);
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 34);
}

TEST_F(SqlCommandPrepareTest, StatementHandedBackByAFailingPrepareIsFinalized)
{
    const std::string message = LeaveMessage();
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_prepare_v2", SQLITE_NOMEM, true);

        EXPECT_FALSE(command.Prepare("SELECT 1"));

        EXPECT_FALSE(sqlite.Pending());
        EXPECT_THAT(sqlite.Calls(),
                    ElementsAre("sqlite3_prepare_v2(handle, SELECT 1, 8)", "sqlite3_finalize(statement)"));
    }
    EXPECT_THAT(command, HasError(SQLITE_NOMEM, message));
    EXPECT_FALSE(command.Step());
    EXPECT_TRUE(database.Close());
}

} // namespace

} // namespace Morvik::sql::tests
