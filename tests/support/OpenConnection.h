#pragma once

#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// Tests with a connection that is open on a new, separate database file.
class OpenConnection : public testing::Test {
protected:
    OpenConnection() { EXPECT_TRUE(database.Open(path, false)) << database.GetLastErrorMsg(); }

    sqlite3* Handle() { return database.GetNativeDatabaseInstance<sqlite3>(); }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    SqlDatabase database;
};

/// Tests with a statement on an open connection.
class ConnectedCommand : public OpenConnection {
protected:
    /// Makes an operation of the command fail, so that a test can check whether the error stays. Returns the message.
    std::string LeaveMessage()
    {
        EXPECT_FALSE(command.Execute("nonsense"));
        EXPECT_NE(command.GetLastErrorMsg(), "");
        return command.GetLastErrorMsg();
    }

    /// Steps to the first row of a query.
    void StepTo(const std::string& sql)
    {
        ASSERT_TRUE(command.Prepare(sql));
        ASSERT_TRUE(command.Step());
        ASSERT_TRUE(command.HasRowData());
    }

    SqlCommand command{database};
};

/// Tests with a cursor on an open connection.
class ConnectedCursor : public OpenConnection {
protected:
    /// Makes opening the cursor fail, so that a test can check whether the error stays. Returns the message.
    std::string LeaveMessage()
    {
        EXPECT_FALSE(table.Open("nonsense"));
        EXPECT_NE(table.GetLastErrorMsg(), "");
        return table.GetLastErrorMsg();
    }

    /// Reads the first row of a query.
    void ReadRow(const std::string& sql)
    {
        ASSERT_TRUE(table.Open(sql));
        ASSERT_TRUE(table.ReadNext());
    }

    SqlTable table{database};
};

/// Steps to the next row, and returns its first column; nothing if there is no row.
inline std::optional<int> NextInteger(SqlCommand& command)
{
    return command.Step() && command.HasRowData() ? std::optional(command.ColumnInt(0)) : std::nullopt;
}

inline std::optional<int> NextInteger(const SqlTable& table)
{
    return table.ReadNext() ? std::optional(table.GetInteger(0)) : std::nullopt;
}

/// The calls to SQLite that `action` makes.
template <typename Action>
std::vector<std::string> CallsDuring(Action action)
{
    const SqliteCallRecorder sqlite;
    action();
    return sqlite.Calls();
}

} // namespace Morvik::sql::tests
