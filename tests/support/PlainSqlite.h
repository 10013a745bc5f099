#pragma once

#include <string>
#include <vector>

struct sqlite3;

namespace Morvik::sql::tests {

/// A plain SQLite connection beside the library: prepares what a test needs, and looks at what the library left.
/// Every failure throws std::runtime_error with SQLite's code and message.
class PlainSqlite {
public:
    /// Opens `path` read-write with creation.
    explicit PlainSqlite(const std::string& path);
    ~PlainSqlite();

    PlainSqlite(const PlainSqlite&) = delete;
    PlainSqlite& operator=(const PlainSqlite&) = delete;

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

/// Code and message that a plain call leaves.
struct PlainFailure {
    int code = 0;
    std::string message;
};

/// What sqlite3_open_v2 answers for `path` with `flags`; nothing stays open.
PlainFailure FailureOfOpen(const std::string& path, int flags);

/// What sqlite3_exec answers for `sql` on a connection.
PlainFailure FailureOfExec(sqlite3* handle, const std::string& sql);

/// What the legacy sqlite3_prepare answers for `sql` on a connection.
PlainFailure FailureOfPrepare(sqlite3* handle, const std::string& sql);

/// What sqlite3_close answers while a statement of the connection is not finalized.
PlainFailure FailureOfCloseWithAStatement();

/// A walk through a query by the legacy interface, to its end or its first failure.
struct PlainWalk {
    int rows = 0;
    PlainFailure step;
    PlainFailure finalize;
};

PlainWalk LegacyWalk(sqlite3* handle, const std::string& sql);

} // namespace Morvik::sql::tests
