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

/// Tests with a connection that is open on a new, separate database file, and with a command and a cursor on it.
class OpenConnection : public testing::Test {
protected:
    OpenConnection() { EXPECT_TRUE(database.Open(path, false)) << database.GetLastErrorMsg(); }

    sqlite3* Handle() { return database.GetNativeDatabaseInstance<sqlite3>(); }

    /// Steps to the first row of a query.
    void StepTo(const std::string& sql)
    {
        ASSERT_TRUE(command.Prepare(sql));
        ASSERT_TRUE(command.Step());
        ASSERT_TRUE(command.HasRowData());
    }

    /// Reads the first row of a query with the cursor.
    void ReadRow(const std::string& sql)
    {
        ASSERT_TRUE(table.Open(sql));
        ASSERT_TRUE(table.ReadNext());
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    SqlDatabase database;
    SqlCommand command{database};
    SqlTable table{database};
};

/// Makes an operation fail, so that a test can check whether the error stays. Returns the message.
inline std::string LeaveMessage(SqlCommand& command)
{
    EXPECT_FALSE(command.Execute("nonsense"));
    EXPECT_NE(command.GetLastErrorMsg(), "");
    return command.GetLastErrorMsg();
}

inline std::string LeaveMessage(const SqlTable& table)
{
    EXPECT_FALSE(table.Open("nonsense"));
    EXPECT_NE(table.GetLastErrorMsg(), "");
    return table.GetLastErrorMsg();
}

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

/// Records the calls to SQLite, and replaces the result of a call, which must happen during the lifetime of the object.
/// The parameters are those of SqliteCallRecorder::ReplaceNextResult().
class ReplacedResult : public SqliteCallRecorder {
public:
    explicit ReplacedResult(const std::string& function, int result = 0, bool forward = false, int skipped = 0)
    {
        ReplaceNextResult(function, result, forward, skipped);
    }
    ~ReplacedResult() { EXPECT_FALSE(Pending()) << "a call whose result is replaced was not made"; }

    ReplacedResult(const ReplacedResult&) = delete;
    ReplacedResult& operator=(const ReplacedResult&) = delete;
};

} // namespace Morvik::sql::tests
