#pragma once

#include <string>

#include "support/RawSqlite.h"

struct sqlite3_stmt;

namespace Morvik::sql::tests {

/// A statement compiled by SQLite's legacy sqlite3_prepare, whose codes differ from those of sqlite3_prepare_v2. The
/// cursor uses sqlite3_prepare, so it must return the same codes in the same situation. A failed compilation throws
/// std::runtime_error.
class RawLegacyStatement {
public:
    RawLegacyStatement(RawSqlite& connection, const std::string& sql);
    ~RawLegacyStatement();

    RawLegacyStatement(const RawLegacyStatement&) = delete;
    RawLegacyStatement& operator=(const RawLegacyStatement&) = delete;

    /// The code of the call. The message is the connection's, and empty if the code is 0, 100 or 101.
    RawFailure Step();
    RawFailure Reset();
    RawFailure Finalize();

private:
    RawFailure Outcome(int code) const;

    sqlite3* m_handle;
    sqlite3_stmt* m_statement = nullptr;
};

} // namespace Morvik::sql::tests
