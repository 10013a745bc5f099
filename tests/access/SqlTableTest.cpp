#include <sql/SqlTable.h>

#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;

using SqlTableOpenTest = OpenConnection;

TEST_F(SqlTableOpenTest, OnlyTheFirstStatementBeforeAZeroByteIsCompiled)
{
    for (const std::string& sql : {"SELECT 7\0nonsense"s, "SELECT 7; nonsense"s}) {
        EXPECT_TRUE(table.Open(sql));
        EXPECT_EQ(NextInteger(table), 7);
        EXPECT_FALSE(table.ReadNext());
        EXPECT_THAT(table, HasError(0, ""));
    }
}

TEST_F(SqlTableOpenTest, TextWithoutAStatementSucceedsAndStaysClosed)
{
    for (const char* sql : {"", " \n", "-- comment"}) {
        EXPECT_TRUE(table.Open(sql)) << sql;
        EXPECT_FALSE(table.IsOpen()) << sql;
        EXPECT_EQ(table.Columns(), 0) << sql;
        EXPECT_FALSE(table.ReadNext()) << sql;
        EXPECT_THAT(table, HasError(0, "")) << sql;
    }
}

TEST_F(SqlTableOpenTest, RejectedTextLeavesSqlitesErrorUntilASuccess)
{
    const RawFailure raw = FailureOfPrepare(RawSqlite(path).Handle(), "SELECT * FROM missing");

    EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(table.Open("SELECT * FROM missing")); }),
                ElementsAre("sqlite3_prepare(handle, SELECT * FROM missing, -1)", "sqlite3_errmsg(handle)"));
    EXPECT_THAT(table, HasError(SQLITE_ERROR, raw.message));
    EXPECT_FALSE(table.IsOpen());

    EXPECT_TRUE(table.Open("SELECT 7"));
    EXPECT_THAT(table, HasError(0, ""));
}

TEST_F(SqlTableOpenTest, SecondOpenFinalizesTheFirstQueryAndCompilesTheSecond)
{
    ReadRow("SELECT 8, 9");
    for (const char* sql : {"SELECT 7", "SELECT 7"}) { // the same query is not rewound, but compiled again
        EXPECT_THAT(CallsDuring([&] { EXPECT_TRUE(table.Open(sql)); }),
                    ElementsAre("sqlite3_finalize(statement)", "sqlite3_prepare(handle, SELECT 7, -1)"));
        EXPECT_EQ(table.Columns(), 1);
        EXPECT_EQ(NextInteger(table), 7);
    }

    EXPECT_FALSE(table.Open("nonsense"));
    EXPECT_FALSE(table.IsOpen());
    EXPECT_TRUE(database.Close()) << "no query is held";
}

TEST_F(SqlTableOpenTest, FailureOfFinalizingTheFirstQueryIsOverwritten)
{
    table.Open("SELECT abs(-9223372036854775807 - 1)");
    ASSERT_FALSE(table.ReadNext());
    ASSERT_NE(table.GetLastErrorMsg(), "");

    EXPECT_THAT(
        CallsDuring([&] { EXPECT_TRUE(table.Open("SELECT 7")); }),
        ElementsAre("sqlite3_finalize(statement)", "sqlite3_errmsg(handle)", "sqlite3_prepare(handle, SELECT 7, -1)"));
    EXPECT_THAT(table, HasError(0, ""));
}

// If finalizing succeeds, its code replaces the earlier one, so the failure is reported as a success.
TEST_F(SqlTableOpenTest, FinalizingReplacesTheCodeOfAFailedCompilation)
{
    for (const int finalized : {SQLITE_OK, SQLITE_CORRUPT}) {
        ReplacedResult sqlite("sqlite3_prepare", SQLITE_NOMEM, true);
        sqlite.ReplaceNextResult("sqlite3_finalize", finalized, true);

        EXPECT_EQ(table.Open("SELECT 7"), finalized == SQLITE_OK);

        std::vector<std::string> calls{"sqlite3_prepare(handle, SELECT 7, -1)", "sqlite3_errmsg(handle)",
                                       "sqlite3_finalize(statement)"};
        if (finalized != SQLITE_OK) {
            calls.emplace_back("sqlite3_errmsg(handle)");
        }
        EXPECT_EQ(sqlite.Calls(), calls);
        EXPECT_THAT(table, HasError(finalized, finalized == SQLITE_OK ? "" : sqlite3_errmsg(Handle())));
        EXPECT_FALSE(table.IsOpen());
    }
}

} // namespace

} // namespace Morvik::sql::tests
