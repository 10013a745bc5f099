#include <sql/SqlTable.h>

#include <sql/SqlDatabase.h>
#include <sql/SqlError.h>

#include <string_view>

#include <sqlite3.h>

#include "access/SqliteErrors.h"

namespace Morvik::sql {

class __attribute__((visibility("hidden"))) SqlTable::Impl {
public:
    explicit Impl(SqlDatabase& tableDatabase) noexcept : database(&tableDatabase) {}
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() { CloseHeldStatement(); }

    sqlite3* Handle() const { return database->GetNativeDatabaseInstance<sqlite3>(); }
    void SetErrorMsg() { SetErrorMsgFrom(Handle(), record); }
    bool CloseStatement() noexcept;

    void CloseHeldStatement() noexcept
    {
        if (statement != nullptr) {
            CloseStatement();
        }
    }

    SqlError record;
    SqlDatabase* database;
    sqlite3_stmt* statement = nullptr;
};

// Returns whether the statement was closed and the result was completely recorded. If the connection is closed, the
// statement is kept and not finalized, because its memory may have been freed.
bool SqlTable::Impl::CloseStatement() noexcept
{
    if (!database->IsOpen()) {
        return false;
    }
    try {
        record.SetError(sqlite3_finalize(statement));
        statement = nullptr; // cleared before anything can fail, so that it is never finalized twice
        if (record.Failed()) {
            SetErrorMsg();
        }
        return true;
    } catch (...) {
        return false; // out of memory: keep the code, drop the message
    }
}

SqlTable::SqlTable(SqlDatabase& database) : m_impl(std::make_unique<Impl>(database)) {}

SqlTable::SqlTable(SqlTable&& other) noexcept = default;

SqlTable& SqlTable::operator=(SqlTable&& other) noexcept = default;

SqlTable::~SqlTable()
{
    Close();
}

bool SqlTable::Open(const std::string& sql) const
{
    if (m_impl->statement != nullptr && !m_impl->CloseStatement()) {
        return m_impl->record.Succeeded();
    }

    // Callers rely on the codes of the legacy interface. It does not compile a statement again after a change of the
    // schema; callers rely on that too.
    m_impl->record.SetError(sqlite3_prepare(m_impl->Handle(), sql.c_str(), -1, &m_impl->statement, nullptr));
    if (m_impl->record.Succeeded()) {
        return true;
    }
    m_impl->SetErrorMsg();
    m_impl->CloseHeldStatement();
    return m_impl->record.Succeeded();
}

bool SqlTable::IsOpen() const
{
    return m_impl->statement != nullptr;
}

bool SqlTable::ReadNext() const
{
    if (m_impl->statement == nullptr) {
        return false;
    }
    const int code = sqlite3_step(m_impl->statement);
    m_impl->record.SetError(code);
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code == SQLITE_DONE) {
        // At the end of the rows the code is 0. Callers rely on it to distinguish the end from a failure.
        m_impl->record.SetError(SQLITE_OK);
        return false;
    }
    m_impl->SetErrorMsg();
    return false;
}

int SqlTable::Columns() const
{
    return m_impl->statement != nullptr ? sqlite3_column_count(m_impl->statement) : 0;
}

bool SqlTable::Reset() const
{
    if (m_impl->statement == nullptr) {
        return true;
    }
    m_impl->record.SetError(sqlite3_reset(m_impl->statement));
    return m_impl->record.Succeeded();
}

bool SqlTable::Close() const
{
    if (m_impl->statement == nullptr) {
        return true;
    }
    m_impl->CloseStatement();
    return m_impl->record.Succeeded();
}

int SqlTable::GetLength(int column) const
{
    return sqlite3_column_bytes(m_impl->statement, column);
}

int SqlTable::GetInteger(int column) const
{
    return sqlite3_column_int(m_impl->statement, column);
}

long long SqlTable::GetInt64(int column) const
{
    return sqlite3_column_int64(m_impl->statement, column);
}

std::string SqlTable::GetText(int column) const
{
    // The type is read first: a conversion that runs out of memory leaves the value NULL.
    if (sqlite3_column_type(m_impl->statement, column) == SQLITE_NULL) {
        ThrowNullText();
    }
    const unsigned char* text = sqlite3_column_text(m_impl->statement, column);
    if (text == nullptr) {
        ThrowOutOfMemory();
    }
    return reinterpret_cast<const char*>(text);
}

const void* SqlTable::GetBlob(int column) const
{
    return sqlite3_column_blob(m_impl->statement, column);
}

SqlValue SqlTable::GetValue(int column) const
{
    return SqlValue(sqlite3_column_value(m_impl->statement, column));
}

SqlValue SqlTable::operator[](int column) const
{
    return GetValue(column);
}

SqlValue SqlTable::operator[](const std::string& name) const
{
    const int columns = sqlite3_column_count(m_impl->statement);
    for (int column = 0; column < columns; ++column) {
        const char* columnName = sqlite3_column_name(m_impl->statement, column);
        if (columnName != nullptr && std::string_view(columnName) == name) {
            return GetValue(column);
        }
    }
    return SqlValue(nullptr);
}

int SqlTable::GetLastError() const
{
    return m_impl->record.GetLastError();
}

const std::string& SqlTable::GetLastErrorMsg() const
{
    return m_impl->record.GetLastErrorMsg();
}

} // namespace Morvik::sql
