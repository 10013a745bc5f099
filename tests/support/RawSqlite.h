#pragma once

#include <string>
#include <vector>

struct sqlite3;

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

/// The result of sqlite3_open_v2 for `path` with `flags`; nothing stays open.
RawFailure FailureOfOpen(const std::string& path, int flags);

/// The result of sqlite3_exec for `sql` on a connection.
RawFailure FailureOfExec(sqlite3* handle, const std::string& sql);

/// The result of the legacy sqlite3_prepare for `sql` on a connection.
RawFailure FailureOfPrepare(sqlite3* handle, const std::string& sql);

/// The result of sqlite3_close while a statement of the connection is not finalized.
RawFailure FailureOfCloseWithAStatement();

/// Reads a query with the legacy interface, to its end or its first failure.
struct RawWalk {
    int rows = 0;
    RawFailure step;
    RawFailure finalize;
};

RawWalk LegacyWalk(sqlite3* handle, const std::string& sql);

} // namespace Morvik::sql::tests
