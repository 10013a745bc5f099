#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>
#include <sql/SqlError.h>

#include <algorithm>
#include <cstddef>
#include <limits>

#include <sqlite3.h>

#include "access/ExecuteText.h"
#include "access/SqliteErrors.h"

namespace Morvik::sql {

namespace {

// SQLite takes lengths as int. A longer value also exceeds SQLite's limits, and SQLite rejects it as too big.
int ByteCount(std::size_t size)
{
    return static_cast<int>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
}

// Stores the message and frees it.
[[gnu::cold, gnu::noinline]] void TakeErrorMsg(char* text, SqlError& error)
{
    const std::unique_ptr<char, decltype(&sqlite3_free)> owned(text, sqlite3_free);
    error.SetErrorMsg(text);
}

} // namespace

class __attribute__((visibility("hidden"))) SqlCommand::Impl : public SqlError {
    static_assert(Ok == SQLITE_OK && Row == SQLITE_ROW && Done == SQLITE_DONE);

public:
    explicit Impl(SqlDatabase& commandDatabase) noexcept : database(&commandDatabase) {}
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    virtual ~Impl() { Finalize(); }

    bool Finalize()
    {
        const bool succeeded = Record(sqlite3_finalize);
        statement = nullptr;
        return succeeded;
    }

    sqlite3* Handle() const { return database->GetNativeDatabaseInstance<sqlite3>(); }
    bool RowAvailable() const { return statement != nullptr && HasRowData(); }

    // Makes one call on the statement and stores its code. The earlier message stays, because callers may still read
    // it.
    template <typename Call>
    bool Record(Call call)
    {
        if (statement == nullptr) {
            return false;
        }
        SetErrorKeepingMessage(call(statement));
        return GetLastError() == SQLITE_OK;
    }

    using SqlError::SetErrorKeepingMessage;

    SqlDatabase* database;
    sqlite3_stmt* statement = nullptr;
};

SqlCommand::SqlCommand(SqlDatabase& database) : m_impl(std::make_unique<Impl>(database)) {}

SqlCommand::SqlCommand(SqlCommand&& other) noexcept = default;

SqlCommand& SqlCommand::operator=(SqlCommand&& other) noexcept = default;

SqlCommand::~SqlCommand() = default;

bool ExecuteText(SqlDatabase& database, const std::string& sql, SqlError& error)
{
    char* text = nullptr;
    error.SetError(sqlite3_exec(database.GetNativeDatabaseInstance<sqlite3>(), sql.c_str(), nullptr, nullptr, &text));
    if (text != nullptr) {
        TakeErrorMsg(text, error);
    }
    return error.Succeeded();
}

bool SqlCommand::Execute(const std::string& sql)
{
    return ExecuteText(*m_impl->database, sql, *m_impl);
}

bool SqlCommand::Prepare(std::string_view sql)
{
    if (m_impl->statement != nullptr) {
        return false;
    }
    const bool terminated = sql.ends_with('\0');
    const int bytes = terminated ? -1 : ByteCount(sql.size());
    const int code = sqlite3_prepare_v2(m_impl->Handle(), sql.data(), bytes, &m_impl->statement, nullptr);
    m_impl->SetErrorKeepingMessage(code);
    if (code == SQLITE_OK) {
        return true;
    }
    if (m_impl->statement != nullptr) {
        sqlite3_finalize(m_impl->statement);
        m_impl->statement = nullptr;
    }
    return false;
}

bool SqlCommand::BindInteger(int index, int value)
{
    return m_impl->Record([=](sqlite3_stmt* statement) { return sqlite3_bind_int(statement, index, value); });
}

bool SqlCommand::BindInt64(int index, long long value)
{
    return m_impl->Record([=](sqlite3_stmt* statement) { return sqlite3_bind_int64(statement, index, value); });
}

bool SqlCommand::BindDouble(int index, double value)
{
    return m_impl->Record([=](sqlite3_stmt* statement) { return sqlite3_bind_double(statement, index, value); });
}

bool SqlCommand::BindText(int index, std::string_view text)
{
    return m_impl->Record([=](sqlite3_stmt* statement) {
        return sqlite3_bind_text(statement, index, text.data(), ByteCount(text.size()), SQLITE_TRANSIENT);
    });
}

bool SqlCommand::BindBlob(int index, std::span<const unsigned char> bytes)
{
    return m_impl->Record([=](sqlite3_stmt* statement) {
        return sqlite3_bind_blob(statement, index, bytes.data(), ByteCount(bytes.size()), SQLITE_TRANSIENT);
    });
}

bool SqlCommand::ClearBindings()
{
    return m_impl->Record(sqlite3_clear_bindings);
}

bool SqlCommand::Step()
{
    if (m_impl->statement == nullptr) {
        return false;
    }
    m_impl->SetError(sqlite3_step(m_impl->statement));
    if (m_impl->GetLastError() == SQLITE_ROW || m_impl->GetLastError() == SQLITE_DONE) {
        return true;
    }
    SetErrorMsgFrom(m_impl->Handle(), *m_impl);
    return false;
}

bool SqlCommand::Reset()
{
    return m_impl->Record(sqlite3_reset);
}

bool SqlCommand::Finalize()
{
    return m_impl->Finalize();
}

int SqlCommand::ColumnCount() const
{
    return m_impl->RowAvailable() ? sqlite3_column_count(m_impl->statement) : 0;
}

bool SqlCommand::ColumnIsNull(int column) const
{
    return m_impl->RowAvailable() && sqlite3_column_type(m_impl->statement, column) == SQLITE_NULL;
}

int SqlCommand::ColumnInt(int column) const
{
    return m_impl->RowAvailable() ? sqlite3_column_int(m_impl->statement, column) : 0;
}

long long SqlCommand::ColumnInt64(int column) const
{
    return m_impl->RowAvailable() ? sqlite3_column_int64(m_impl->statement, column) : 0;
}

double SqlCommand::ColumnDouble(int column) const
{
    return m_impl->RowAvailable() ? sqlite3_column_double(m_impl->statement, column) : 0.0;
}

std::string SqlCommand::ColumnText(int column) const
{
    if (!m_impl->RowAvailable()) {
        return {};
    }
    // The length is read first, because reading it may convert the value; the pointer must be that of the converted
    // value.
    const int bytes = sqlite3_column_bytes(m_impl->statement, column);
    if (bytes <= 0) {
        return {};
    }
    const unsigned char* text = sqlite3_column_text(m_impl->statement, column);
    if (text == nullptr) {
        ThrowOutOfMemory();
    }
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(bytes)};
}

std::span<const unsigned char> SqlCommand::ColumnBlob(int column) const
{
    if (!m_impl->RowAvailable()) {
        return {};
    }
    const int bytes = sqlite3_column_bytes(m_impl->statement, column);
    if (bytes <= 0) {
        return {};
    }
    const void* blob = sqlite3_column_blob(m_impl->statement, column);
    if (blob == nullptr) {
        ThrowOutOfMemory();
    }
    return {static_cast<const unsigned char*>(blob), static_cast<std::size_t>(bytes)};
}

bool SqlCommand::HasRowData() const
{
    return m_impl->HasRowData();
}

int SqlCommand::GetLastError() const
{
    return m_impl->GetLastError();
}

const std::string& SqlCommand::GetLastErrorMsg() const
{
    return m_impl->GetLastErrorMsg();
}

} // namespace Morvik::sql
