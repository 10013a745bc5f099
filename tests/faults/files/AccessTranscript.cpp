#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <sqlite3.h>

#include <cstddef>
#include <sstream>
#include <string_view>
#include <utility>

#include "files/Transcript.h"

namespace Morvik::sql::tests {

namespace {

std::string_view Bytes(const void* data, int size)
{
    return {static_cast<const char*>(data), data != nullptr ? static_cast<std::size_t>(size) : 0};
}

/// Runs the operations with the library.
class Library {
public:
    bool Open(const std::string& path) { return Noted(m_database, m_database.Open(path, true)); }

    bool Execute(const std::string& sql) { return Noted(m_command, m_command.Execute(sql)); }
    bool Prepare(const std::string& sql) { return Noted(m_command, m_command.Prepare(sql)); }
    bool Bind(int value) { return Noted(m_command, m_command.BindInteger(1, value)); }
    bool Step() { return Noted(m_command, m_command.Step()); }
    bool Finalize() { return Noted(m_command, m_command.Finalize()); }

    std::string Row() const
    {
        std::ostringstream row;
        for (int column = 0; column < m_command.ColumnCount(); ++column) {
            const auto blob = m_command.ColumnBlob(column);
            row << m_command.ColumnIsNull(column) << ' ' << m_command.ColumnInt(column) << ' '
                << m_command.ColumnInt64(column) << ' ' << m_command.ColumnDouble(column) << ' '
                << Bytes(blob.data(), static_cast<int>(blob.size())) << ' ' << m_command.ColumnText(column) << '|';
        }
        return row.str();
    }

    bool OpenTable(const std::string& sql) { return Noted(m_table, m_table.Open(sql)); }
    bool ReadNext() { return Noted(m_table, m_table.ReadNext()); }
    bool CloseTable() { return Noted(m_table, m_table.Close()); }

    std::string TableRow() const
    {
        std::ostringstream row;
        for (int column = 0; column < m_table.Columns(); ++column) {
            SqlValue value = m_table[column];
            const int length = m_table.GetLength(column);
            row << value.GetValueType() << ' ' << length << ' ' << Bytes(m_table.GetBlob(column), length) << ' '
                << m_table.GetInteger(column) << ' ' << m_table.GetInt64(column) << ' ' << value.GetValue<double>()
                << ' ' << (value.GetValueType() != SQLITE_NULL ? m_table.GetText(column) : "") << '|';
        }
        return row.str();
    }

    int code = 0;
    std::string message;

private:
    template <typename Recorded>
    bool Noted(const Recorded& recorded, bool succeeded)
    {
        code = recorded.GetLastError();
        message = recorded.GetLastErrorMsg();
        return succeeded;
    }

    SqlDatabase m_database;
    SqlCommand m_command{m_database};
    SqlTable m_table{m_database};
};

/// Runs the same operations with direct SQLite calls.
class Plain {
public:
    Plain() = default;
    ~Plain() { sqlite3_close(m_handle); }
    Plain(const Plain&) = delete;
    Plain& operator=(const Plain&) = delete;

    bool Open(const std::string& path)
    {
        return Noted(sqlite3_open_v2(path.c_str(), &m_handle, SQLITE_OPEN_READONLY, nullptr));
    }

    bool Execute(const std::string& sql)
    {
        return Noted(sqlite3_exec(m_handle, sql.c_str(), nullptr, nullptr, nullptr));
    }

    // The statement's operations keep the earlier message; only its steps replace it.
    bool Prepare(const std::string& sql)
    {
        code = sqlite3_prepare_v2(m_handle, sql.c_str(), -1, &m_statement, nullptr);
        return code == SQLITE_OK;
    }

    bool Bind(int value)
    {
        code = sqlite3_bind_int(m_statement, 1, value);
        return code == SQLITE_OK;
    }

    bool Step() { return Noted(sqlite3_step(m_statement)); }

    bool Finalize()
    {
        code = sqlite3_finalize(m_statement);
        return code == SQLITE_OK;
    }

    std::string Row() const
    {
        std::ostringstream row;
        for (int column = 0; column < sqlite3_column_count(m_statement); ++column) {
            const int size = sqlite3_column_bytes(m_statement, column);
            const std::string blob(Bytes(sqlite3_column_blob(m_statement, column), size));
            row << (sqlite3_column_type(m_statement, column) == SQLITE_NULL) << ' '
                << sqlite3_column_int(m_statement, column) << ' ' << sqlite3_column_int64(m_statement, column) << ' '
                << sqlite3_column_double(m_statement, column) << ' ' << blob << ' ';
            const int length = sqlite3_column_bytes(m_statement, column);
            row << Bytes(sqlite3_column_text(m_statement, column), length) << '|';
        }
        return row.str();
    }

    bool OpenTable(const std::string& sql)
    {
        return Noted(sqlite3_prepare(m_handle, sql.c_str(), -1, &m_statement, nullptr));
    }

    bool ReadNext()
    {
        Noted(sqlite3_step(m_statement));
        const bool read = code == SQLITE_ROW;
        code = code == SQLITE_DONE ? 0 : code;
        return read;
    }

    bool CloseTable() { return Noted(sqlite3_finalize(m_statement)); }

    std::string TableRow() const
    {
        std::ostringstream row;
        for (int column = 0; column < sqlite3_column_count(m_statement); ++column) {
            const int type = sqlite3_column_type(m_statement, column);
            const int length = sqlite3_column_bytes(m_statement, column);
            row << type << ' ' << length << ' ' << Bytes(sqlite3_column_blob(m_statement, column), length) << ' '
                << sqlite3_column_int(m_statement, column) << ' ' << sqlite3_column_int64(m_statement, column) << ' '
                << sqlite3_column_double(m_statement, column) << ' ';
            const unsigned char* text = type != SQLITE_NULL ? sqlite3_column_text(m_statement, column) : nullptr;
            row << (text != nullptr ? reinterpret_cast<const char*>(text) : "") << '|';
        }
        return row.str();
    }

    int code = 0;
    std::string message;

private:
    bool Noted(int result)
    {
        code = result;
        const bool succeeded = code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE;
        message = succeeded ? "" : sqlite3_errmsg(m_handle);
        return succeeded;
    }

    sqlite3* m_handle = nullptr;
    sqlite3_stmt* m_statement = nullptr;
};

/// The sequence of operations, with the library or with direct SQLite calls.
template <typename Side>
class Script {
public:
    Transcript Run(const std::string& path)
    {
        if (!Note("Open", m_side.Open(path))) {
            return std::move(m_transcript);
        }
        Note("Execute", m_side.Execute("SELECT max(label) FROM reading; SELECT count(*) FROM note"));
        if (Note("Prepare", m_side.Prepare("SELECT rowid, * FROM reading WHERE number > ?"))) {
            Note("Bind", m_side.Bind(20));
            while (Note("Step", m_side.Step()) && m_side.code == SQLITE_ROW) {
                m_transcript.back().rows.push_back(m_side.Row());
            }
            Note("Finalize", m_side.Finalize());
        }
        if (Note("OpenTable", m_side.OpenTable("SELECT * FROM note"))) {
            while (Note("ReadNext", m_side.ReadNext())) {
                m_transcript.back().rows.push_back(m_side.TableRow());
            }
            Note("CloseTable", m_side.CloseTable());
        }
        return std::move(m_transcript);
    }

private:
    bool Note(const char* operation, bool succeeded)
    {
        m_transcript.push_back({operation, succeeded, m_side.code, m_side.message, {}});
        return succeeded;
    }

    Side m_side;
    Transcript m_transcript;
};

} // namespace

Transcript AccessTranscript(const std::string& path)
{
    return Script<Library>().Run(path);
}

Transcript PlainAccessTranscript(const std::string& path)
{
    return Script<Plain>().Run(path);
}

} // namespace Morvik::sql::tests
