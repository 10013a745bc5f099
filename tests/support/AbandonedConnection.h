#pragma once

#include <sql/SqlDatabase.h>

#include <utility>

#include <sqlite3.h>

#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

/// Makes a connection look closed while its statements still exist: a closed connection is assigned to it, which drops
/// the raw handle without closing it. This object takes that handle, and its destructor finalizes the remaining
/// statements and closes the handle.
class AbandonedConnection {
public:
    explicit AbandonedConnection(SqlDatabase& database) : m_handle(database.GetNativeDatabaseInstance<sqlite3>())
    {
        NoDestructor<SqlDatabase> closed;
        database = std::move(*closed);
    }

    /// Takes the handle that a destroyed SqlDatabase did not close.
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

    /// A statement that is not finalized; null when there is none.
    sqlite3_stmt* Statement() const { return sqlite3_next_stmt(m_handle, nullptr); }

private:
    sqlite3* m_handle;
};

} // namespace Morvik::sql::tests
