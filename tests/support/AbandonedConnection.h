#pragma once

#include <sql/SqlDatabase.h>

#include <sqlite3.h>

#include <utility>

#include "support/Undestroyed.h"

namespace Morvik::sql::tests {

/// Makes a connection look closed while its statements live on: a closed one is assigned over it, which drops the raw
/// handle without closing it. The object takes that handle, and finalizes and closes what is left on it at the end.
class AbandonedConnection {
public:
    explicit AbandonedConnection(SqlDatabase& database) : m_handle(database.GetNativeDatabaseInstance<sqlite3>())
    {
        Undestroyed<SqlDatabase> closed;
        database = std::move(*closed);
    }

    /// Takes a handle that a destroyed SqlDatabase has left behind.
    explicit AbandonedConnection(sqlite3* handle) : m_handle(handle) {}

    ~AbandonedConnection()
    {
        while (sqlite3_stmt* statement = Statement()) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(m_handle);
    }

    AbandonedConnection(const AbandonedConnection&) = delete;
    AbandonedConnection& operator=(const AbandonedConnection&) = delete;

    sqlite3* Handle() const { return m_handle; }

    /// A statement that nobody has finalized, null when there is none.
    sqlite3_stmt* Statement() const { return sqlite3_next_stmt(m_handle, nullptr); }

private:
    sqlite3* m_handle;
};

} // namespace Morvik::sql::tests
