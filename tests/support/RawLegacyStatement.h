#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include <sqlite3.h>

#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

/// A statement compiled by SQLite's legacy sqlite3_prepare, whose codes differ from those of sqlite3_prepare_v2. The
/// cursor uses sqlite3_prepare, so it must return the same codes in the same situation. A failed compilation throws
/// std::runtime_error.
class RawLegacyStatement {
public:
    RawLegacyStatement(RawSqlite& connection, const std::string& sql) : m_handle(connection.Handle())
    {
        if (sqlite3_prepare(m_handle, sql.c_str(), -1, &m_statement, nullptr) != SQLITE_OK) {
            throw std::runtime_error("SQLite does not compile " + sql);
        }
    }

    ~RawLegacyStatement() { sqlite3_finalize(m_statement); }

    RawLegacyStatement(const RawLegacyStatement&) = delete;
    RawLegacyStatement& operator=(const RawLegacyStatement&) = delete;

    /// The code of the call. The message is the connection's, and empty if the code is 0, 100 or 101.
    RawFailure Step() { return Outcome(sqlite3_step(m_statement)); }
    RawFailure Reset() { return Outcome(sqlite3_reset(m_statement)); }
    RawFailure Finalize() { return Outcome(sqlite3_finalize(std::exchange(m_statement, nullptr))); }

private:
    RawFailure Outcome(int code) const
    {
        const bool succeeded = code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE;
        return {code, succeeded ? "" : sqlite3_errmsg(m_handle)};
    }

    sqlite3* m_handle;
    sqlite3_stmt* m_statement = nullptr;
};

} // namespace Morvik::sql::tests
