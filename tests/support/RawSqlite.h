#pragma once

#include <string>
#include <utility>
#include <vector>

#include <sqlite3.h>

namespace Morvik::sql::tests {

/// A raw SQLite connection in addition to the library's: prepares what a test needs, and checks what the library left.
/// Every failure throws std::runtime_error with SQLite's code and message.
class RawSqlite {
public:
    /// Opens `path` read-write and creates it if it is missing.
    explicit RawSqlite(const std::string& path);
    ~RawSqlite();

    RawSqlite(const RawSqlite&) = delete;
    RawSqlite& operator=(const RawSqlite&) = delete;

    sqlite3* Handle() const { return m_handle; }

    /// Runs every statement of `sql`.
    void Execute(const std::string& sql);

    /// The rows of a query, each value as SQLite's `quote()` writes it ("NULL", "12", "'text'", "X'00FF'").
    std::vector<std::vector<std::string>> Rows(const std::string& sql);

    /// The first column of the first row, as Rows() writes it.
    std::string Value(const std::string& sql);

private:
    sqlite3* m_handle = nullptr;
};

/// Code and message after a call of raw SQLite.
struct RawFailure {
    int code = 0;
    std::string message;
};

/// The result `code` of a call with the connection's message, which is left out if the code is 0, 100 or 101.
RawFailure FailureOf(int code, sqlite3* handle);

/// The result of sqlite3_open_v2 for `path` with `flags`; nothing stays open.
RawFailure FailureOfOpen(const std::string& path, int flags);

/// The result of sqlite3_exec for `sql` on a connection.
RawFailure FailureOfExec(sqlite3* handle, const std::string& sql);

/// The result of the legacy sqlite3_prepare for `sql` on a connection.
RawFailure FailureOfPrepare(sqlite3* handle, const std::string& sql);

/// The result of sqlite3_close while a statement of the connection is not finalized.
RawFailure FailureOfCloseWithAStatement();

/// A statement compiled by SQLite's legacy sqlite3_prepare, whose codes differ from those of sqlite3_prepare_v2. The
/// cursor uses sqlite3_prepare, so it must return the same codes in the same situation. A failed compilation throws
/// std::runtime_error.
class RawLegacyStatement {
public:
    RawLegacyStatement(sqlite3* handle, const std::string& sql);
    ~RawLegacyStatement() { sqlite3_finalize(m_statement); }

    RawLegacyStatement(const RawLegacyStatement&) = delete;
    RawLegacyStatement& operator=(const RawLegacyStatement&) = delete;

    RawFailure Step() { return FailureOf(sqlite3_step(m_statement), m_handle); }
    RawFailure Reset() { return FailureOf(sqlite3_reset(m_statement), m_handle); }
    RawFailure Finalize() { return FailureOf(sqlite3_finalize(std::exchange(m_statement, nullptr)), m_handle); }

private:
    sqlite3* m_handle;
    sqlite3_stmt* m_statement = nullptr;
};

/// Reads a query with the legacy interface, to its end or its first failure.
struct RawWalk {
    RawFailure step;
    RawFailure finalize;
};

RawWalk LegacyWalk(sqlite3* handle, const std::string& sql);

} // namespace Morvik::sql::tests
