// Linked into the tests if SQLite is built without double-quoted texts: all connections of the tests then accept these
// texts. An application that writes texts on such a SQLite does the same.
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace {

int AllowDoubleQuotedTexts(sqlite3* connection, char**, const sqlite3_api_routines*)
{
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
    return sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 1, nullptr);
}

[[maybe_unused]] const int Allowed = sqlite3_auto_extension(reinterpret_cast<void (*)()>(AllowDoubleQuotedTexts));

TEST(DoubleQuotedTexts, SqliteIsBuiltWithoutDoubleQuotedTexts)
{
    EXPECT_EQ(sqlite3_compileoption_used("DQS=0"), 1);
}

} // namespace
