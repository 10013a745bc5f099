#include "support/RawLegacyStatement.h"

#include <sqlite3.h>

#include <stdexcept>
#include <utility>

namespace Morvik::sql::tests {

RawLegacyStatement::RawLegacyStatement(RawSqlite& connection, const std::string& sql) : m_handle(connection.Handle())
{
    if (sqlite3_prepare(m_handle, sql.c_str(), -1, &m_statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error("plain SQLite does not compile " + sql);
    }
}

RawLegacyStatement::~RawLegacyStatement()
{
    sqlite3_finalize(m_statement);
}

RawFailure RawLegacyStatement::Step()
{
    return Outcome(sqlite3_step(m_statement));
}

RawFailure RawLegacyStatement::Reset()
{
    return Outcome(sqlite3_reset(m_statement));
}

RawFailure RawLegacyStatement::Finalize()
{
    return Outcome(sqlite3_finalize(std::exchange(m_statement, nullptr)));
}

RawFailure RawLegacyStatement::Outcome(int code) const
{
    const bool succeeded = code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE;
    return {code, succeeded ? "" : sqlite3_errmsg(m_handle)};
}

} // namespace Morvik::sql::tests
