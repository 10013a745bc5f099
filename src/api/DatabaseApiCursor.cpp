#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"

namespace Morvik::sql {

bool DatabaseApi::Impl::OpenCursor(const std::string& sql)
{
    table.Close();
    ResetCode();
    if (!CheckOpen()) {
        return false;
    }
    if (sql.empty()) {
        return Fail(MissingValue, "Missing query SQL statement.");
    }
    if (!table.Open(sql)) {
        CopyErrorFrom(table);
    }
    return Succeeded();
}

bool DatabaseApi::Impl::CloseCursor()
{
    ResetCode();
    if (table.Close()) {
        return true;
    }
    CopyErrorFrom(table);
    return false;
}

bool DatabaseApi::SqlQueryBegin(const std::string& sql)
{
    // Clears the row at the end, also after an exception, and not earlier: `sql` may be a text in the row.
    struct ClearAtEnd {
        std::vector<DbTableColumnValue>& cells;
        ~ClearAtEnd() { cells.clear(); }
    };
    const ClearAtEnd row{m_row.cells};
    return m_impl->OpenCursor(sql);
}

DbTableRowIterator DatabaseApi::begin()
{
    return ReadNextRow(m_row) ? DbTableRowIterator(this, &m_row) : end();
}

DbTableRowIterator DatabaseApi::end() const
{
    return DbTableRowIterator(this, nullptr);
}

bool DatabaseApi::CloseReadTable() const
{
    return m_impl->CloseCursor();
}

DbTableRowIterator& DbTableRowIterator::operator++()
{
    if (!m_facade->ReadNextRow(*m_row)) {
        m_position = AtEnd;
        m_row = nullptr;
    }
    return *this;
}

} // namespace Morvik::sql
