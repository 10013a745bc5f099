#pragma once

#include <exception>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <sqlite3.h>

#include "support/RawSqlite.h"

// A second implementation of the access layer, made of direct SQLite calls: the operations of SqlDatabase, SqlCommand,
// SqlTable and SqlValue that the tests compare.

namespace Morvik::sql::tests {

/// The code and message of the last operation.
class ReferenceError {
public:
    int GetLastError() const { return m_error.code; }
    const std::string& GetLastErrorMsg() const { return m_error.message; }

protected:
    /// Stores the code, and the connection's message if the code is a failure. Returns whether the code is a success.
    bool SetError(int code, sqlite3* handle)
    {
        m_error = FailureOf(code, handle);
        return code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE;
    }

    /// Mutable, because constant reads of the facade change it.
    mutable RawFailure m_error;
};

class ReferenceDatabase : public ReferenceError {
public:
    ReferenceDatabase() = default;
    ~ReferenceDatabase() { sqlite3_close(m_handle); }
    ReferenceDatabase(const ReferenceDatabase&) = delete;
    ReferenceDatabase& operator=(const ReferenceDatabase&) = delete;

    sqlite3* Handle() const { return m_handle; }
    bool IsOpen() const { return m_handle != nullptr; }

    bool Open(const std::string& path, bool readOnly)
    {
        if (IsOpen()) {
            return false;
        }
        try {
            const std::filesystem::path directory = std::filesystem::path(path).parent_path();
            if (!path.starts_with(':') && !directory.empty() && !std::filesystem::exists(directory)) {
                std::filesystem::create_directories(directory);
            }
        } catch (const std::exception&) {
            m_error = {111, "Create directory failed: " + path};
            return false;
        }
        const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
        const int code = sqlite3_open_v2(path.c_str(), &m_handle, flags, nullptr);
        if (SetError(code, m_handle)) {
            return true;
        }
        sqlite3_close(std::exchange(m_handle, nullptr));
        return false;
    }

    bool Close()
    {
        const bool closed = !IsOpen() || SetError(sqlite3_close(m_handle), m_handle);
        m_handle = closed ? nullptr : m_handle;
        return closed;
    }

private:
    sqlite3* m_handle = nullptr;
};

/// Owns the statement of a command or cursor.
class ReferenceStatement : public ReferenceError {
public:
    explicit ReferenceStatement(const ReferenceDatabase& database) : m_database(database) {}
    ~ReferenceStatement() { sqlite3_finalize(m_statement); }
    ReferenceStatement(const ReferenceStatement&) = delete;
    ReferenceStatement& operator=(const ReferenceStatement&) = delete;

    bool IsOpen() const { return m_statement != nullptr; }

protected:
    const ReferenceDatabase& m_database;
    sqlite3_stmt* m_statement = nullptr;
};

class ReferenceCommand : public ReferenceStatement {
public:
    using ReferenceStatement::ReferenceStatement;
    ReferenceCommand(const ReferenceDatabase& database, std::string_view sql) : ReferenceStatement(database)
    {
        Prepare(sql);
    }

    bool Execute(const std::string& sql)
    {
        m_error = FailureOfExec(m_database.Handle(), sql);
        return m_error.code == SQLITE_OK;
    }

    bool Prepare(std::string_view sql)
    {
        const int count = sql.ends_with('\0') ? -1 : static_cast<int>(sql.size());
        return Store(sqlite3_prepare_v2(m_database.Handle(), sql.data(), count, &m_statement, nullptr));
    }

    bool BindInteger(int index, int value) { return IsOpen() && Store(sqlite3_bind_int(m_statement, index, value)); }

    bool BindText(int index, std::string_view text)
    {
        return IsOpen() && Store(sqlite3_bind_text(m_statement, index, text.data(), static_cast<int>(text.size()),
                                                   SQLITE_TRANSIENT));
    }

    bool Step() { return IsOpen() && SetError(sqlite3_step(m_statement), m_database.Handle()); }
    bool Finalize() { return IsOpen() && Store(sqlite3_finalize(std::exchange(m_statement, nullptr))); }

    // The column operations are called only on a row.
    bool HasRowData() const { return m_error.code == SQLITE_ROW; }
    int ColumnCount() const { return sqlite3_column_count(m_statement); }
    bool ColumnIsNull(int column) const { return sqlite3_column_type(m_statement, column) == SQLITE_NULL; }
    int ColumnInt(int column) const { return sqlite3_column_int(m_statement, column); }
    long long ColumnInt64(int column) const { return sqlite3_column_int64(m_statement, column); }
    double ColumnDouble(int column) const { return sqlite3_column_double(m_statement, column); }

    std::string ColumnText(int column) const
    {
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
        const unsigned char* const text = sqlite3_column_text(m_statement, column);
        return size > 0 ? std::string(reinterpret_cast<const char*>(text), size) : "";
    }

    std::span<const unsigned char> ColumnBlob(int column) const
    {
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
        return {static_cast<const unsigned char*>(sqlite3_column_blob(m_statement, column)), size};
    }

private:
    // The message of an earlier operation stays.
    bool Store(int code)
    {
        m_error.code = code;
        return code == SQLITE_OK;
    }
};

struct ReferenceValue {
    int GetValueType() const { return sqlite3_value_type(value); }

    template <typename T>
    T GetValue() const
    {
        if constexpr (std::is_same_v<T, int>) {
            return sqlite3_value_int(value);
        } else if constexpr (std::is_same_v<T, double>) {
            return sqlite3_value_double(value);
        } else if constexpr (std::is_same_v<T, std::string>) {
            return reinterpret_cast<const char*>(sqlite3_value_text(value));
        } else {
            const int size = sqlite3_value_bytes(value);
            const auto* const bytes = static_cast<const char*>(sqlite3_value_blob(value));
            return T(bytes, bytes + size);
        }
    }

    sqlite3_value* value;
};

/// Uses the legacy sqlite3_prepare, whose codes differ from those of sqlite3_prepare_v2.
class ReferenceTable : public ReferenceStatement {
public:
    using ReferenceStatement::ReferenceStatement;

    bool Open(const std::string& sql)
    {
        Close();
        return SetError(sqlite3_prepare(m_database.Handle(), sql.c_str(), -1, &m_statement, nullptr),
                        m_database.Handle());
    }

    bool ReadNext()
    {
        if (!IsOpen()) {
            return false;
        }
        SetError(sqlite3_step(m_statement), m_database.Handle());
        m_error.code = m_error.code == SQLITE_DONE ? SQLITE_OK : m_error.code;
        return m_error.code == SQLITE_ROW;
    }

    bool Close()
    {
        return !IsOpen() || SetError(sqlite3_finalize(std::exchange(m_statement, nullptr)), m_database.Handle());
    }

    int Columns() const { return sqlite3_column_count(m_statement); }
    int GetLength(int column) const { return sqlite3_column_bytes(m_statement, column); }
    int GetInteger(int column) const { return sqlite3_column_int(m_statement, column); }
    long long GetInt64(int column) const { return sqlite3_column_int64(m_statement, column); }
    std::string GetText(int column) const { return (*this)[column].GetValue<std::string>(); }
    const void* GetBlob(int column) const { return sqlite3_column_blob(m_statement, column); }
    ReferenceValue operator[](int column) const { return {sqlite3_column_value(m_statement, column)}; }
};

} // namespace Morvik::sql::tests
