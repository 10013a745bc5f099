#pragma once

#include <string>

#include "support/PlainSqlite.h"

struct sqlite3_stmt;

namespace Morvik::sql::tests {

/// A statement compiled by SQLite's legacy sqlite3_prepare, whose codes differ from those of sqlite3_prepare_v2. The
/// cursor uses sqlite3_prepare, so it must return the same codes in the same situation. A failed compilation throws
/// std::runtime_error.
class PlainLegacyStatement {
public:
    PlainLegacyStatement(PlainSqlite& connection, const std::string& sql);
    ~PlainLegacyStatement();

    PlainLegacyStatement(const PlainLegacyStatement&) = delete;
    PlainLegacyStatement& operator=(const PlainLegacyStatement&) = delete;

    /// The code of the call. The message is the connection's, and empty if the code is 0, 100 or 101.
    PlainFailure Step();
    PlainFailure Reset();
    PlainFailure Finalize();

private:
    PlainFailure Outcome(int code) const;

    sqlite3* m_handle;
    sqlite3_stmt* m_statement = nullptr;
};

} // namespace Morvik::sql::tests
