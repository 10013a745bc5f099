#include "support/PlainLegacyStatement.h"

#include <sqlite3.h>

#include <stdexcept>
#include <utility>

namespace Morvik::sql::tests {

PlainLegacyStatement::PlainLegacyStatement(PlainSqlite& connection, const std::string& sql)
    : m_handle(connection.Handle())
{
    if (sqlite3_prepare(m_handle, sql.c_str(), -1, &m_statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error("plain SQLite does not compile " + sql);
    }
}

PlainLegacyStatement::~PlainLegacyStatement()
{
    sqlite3_finalize(m_statement);
}

PlainFailure PlainLegacyStatement::Step()
{
    return Outcome(sqlite3_step(m_statement));
}

PlainFailure PlainLegacyStatement::Reset()
{
    return Outcome(sqlite3_reset(m_statement));
}

PlainFailure PlainLegacyStatement::Finalize()
{
    return Outcome(sqlite3_finalize(std::exchange(m_statement, nullptr)));
}

PlainFailure PlainLegacyStatement::Outcome(int code) const
{
    const bool succeeded = code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE;
    return {code, succeeded ? "" : sqlite3_errmsg(m_handle)};
}

} // namespace Morvik::sql::tests
