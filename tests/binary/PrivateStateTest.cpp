// The private state behind the one-pointer classes, read through that pointer. Programs never read it, but debuggers
// and tools that read core dumps do.
#include <sql/DatabaseApi.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlError.h>
#include <sql/SqlTable.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "binary/ObjectBytes.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t StateWord = sizeof(void*);

class PrivateStateTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_database.Open(":memory:", false)); }

    sqlite3* Handle() { return m_database.GetNativeDatabaseInstance<sqlite3>(); }

    // The only statement of the connection.
    const void* Statement() { return sqlite3_next_stmt(Handle(), nullptr); }

    SqlDatabase m_database;
};

TEST_F(PrivateStateTest, ConnectionStateOrderIsRecordHandle)
{
    const auto* state = ReadAt<const char*>(&m_database, 0);

    EXPECT_EQ(OffsetIn(state, m_database.GetLastErrorMsg()), StateWord);
    EXPECT_EQ(ReadAt<const void*>(state, sizeof(SqlError)), Handle());

    SqlCommand holding(m_database);
    ASSERT_TRUE(holding.Prepare("SELECT 1"));
    ASSERT_FALSE(m_database.Close());

    EXPECT_EQ(ReadAt<std::int32_t>(state, 0), SQLITE_BUSY);
}

TEST_F(PrivateStateTest, CursorStateOrderIsRecordConnectionStatement)
{
    const SqlTable table(m_database);
    const auto* state = ReadAt<const char*>(&table, 0);

    EXPECT_EQ(OffsetIn(state, table.GetLastErrorMsg()), StateWord);
    EXPECT_EQ(ReadAt<const void*>(state, sizeof(SqlError)), &m_database);
    EXPECT_EQ(ReadAt<const void*>(state, sizeof(SqlError) + StateWord), nullptr);

    ASSERT_TRUE(table.Open("SELECT 1"));
    ASSERT_TRUE(table.ReadNext());

    EXPECT_EQ(ReadAt<std::int32_t>(state, 0), SQLITE_ROW);
    EXPECT_EQ(ReadAt<const void*>(state, sizeof(SqlError) + StateWord), Statement());
}

TEST_F(PrivateStateTest, StatementStateOrderIsTableRecordConnectionStatement)
{
    SqlCommand command(m_database);
    const auto* state = ReadAt<const char*>(&command, 0);

    EXPECT_EQ(OffsetIn(state, command.GetLastErrorMsg()), 2 * StateWord);
    EXPECT_EQ(ReadAt<const void*>(state, StateWord + sizeof(SqlError)), &m_database);
    EXPECT_EQ(ReadAt<const void*>(state, 2 * StateWord + sizeof(SqlError)), nullptr);

    ASSERT_TRUE(command.Prepare("SELECT 1"));
    ASSERT_TRUE(command.Step());

    EXPECT_EQ(ReadAt<std::int32_t>(state, StateWord), SQLITE_ROW);
    EXPECT_EQ(ReadAt<const void*>(state, 2 * StateWord + sizeof(SqlError)), Statement());
}

TEST_F(PrivateStateTest, FacadeStateOrderIsCodeMessageConnectionCursor)
{
    DatabaseApi facade;
    const auto* state = ReadAt<const char*>(&facade, StateWord);
    constexpr std::size_t Connection = StateWord + sizeof(std::string);
    constexpr std::size_t Cursor = Connection + StateWord;

    EXPECT_EQ(OffsetIn(state, facade.GetLastErrorMsg()), StateWord);
    ASSERT_FALSE(facade.Execute(""));
    EXPECT_EQ(ReadAt<std::int32_t>(state, 0), facade.GetLastError());

    // The cursor's state refers to the connection that it was created on, which is the facade's.
    const auto* cursorState = ReadAt<const char*>(state, Cursor);
    EXPECT_EQ(ReadAt<const void*>(cursorState, sizeof(SqlError)), state + Connection);

    // The connection's state has no handle until it is opened.
    const auto* connectionState = ReadAt<const char*>(state, Connection);
    EXPECT_EQ(ReadAt<const void*>(connectionState, sizeof(SqlError)), nullptr);
    ASSERT_TRUE(facade.OpenDatabase(":memory:", false));
    EXPECT_NE(ReadAt<const void*>(connectionState, sizeof(SqlError)), nullptr);
}

} // namespace

} // namespace Morvik::sql::tests
