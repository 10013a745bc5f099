#include "support/RawSqlite.h"

#include <stdexcept>
#include <string_view>

#include "support/Quoting.h"

namespace Morvik::sql::tests {

namespace {

std::runtime_error Error(int code, sqlite3* handle, const std::string& what)
{
    return std::runtime_error("raw SQLite: code " + std::to_string(code) + ", " + sqlite3_errmsg(handle) + ": " + what);
}

std::string ColumnText(sqlite3_stmt* statement, int column)
{
    const int type = sqlite3_column_type(statement, column);
    if (type == SQLITE_NULL) {
        return "NULL";
    }
    const void* const data =
        type == SQLITE_BLOB ? sqlite3_column_blob(statement, column) : sqlite3_column_text(statement, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    const std::string_view content(static_cast<const char*>(data), size);
    if (type == SQLITE_BLOB) {
        return "X'" + Hex(content) + "'";
    }
    return type == SQLITE_TEXT ? Quoted(content, '\'') : std::string(content);
}

} // namespace

RawSqlite::RawSqlite(const std::string& path)
{
    const int code = sqlite3_open(path.c_str(), &m_handle);
    if (code != SQLITE_OK) {
        const std::runtime_error failure = Error(code, m_handle, path);
        sqlite3_close(m_handle);
        throw failure;
    }
}

RawSqlite::~RawSqlite()
{
    sqlite3_close(m_handle);
}

void RawSqlite::Execute(const std::string& sql)
{
    const int code = sqlite3_exec(m_handle, sql.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) {
        throw Error(code, m_handle, sql);
    }
}

std::vector<std::vector<std::string>> RawSqlite::Rows(const std::string& sql)
{
    sqlite3_stmt* statement = nullptr;
    int code = sqlite3_prepare_v2(m_handle, sql.c_str(), -1, &statement, nullptr);
    std::vector<std::vector<std::string>> rows;
    if (code == SQLITE_OK) {
        while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
            std::vector<std::string>& row = rows.emplace_back();
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                row.push_back(ColumnText(statement, column));
            }
        }
    }
    sqlite3_finalize(statement);
    if (code != SQLITE_DONE) {
        throw Error(code, m_handle, sql);
    }
    return rows;
}

std::string RawSqlite::Value(const std::string& sql)
{
    return Rows(sql).at(0).at(0);
}

RawFailure FailureOf(int code, sqlite3* handle)
{
    const bool succeeded = code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE;
    return {code, succeeded ? "" : sqlite3_errmsg(handle)};
}

RawFailure FailureOfOpen(const std::string& path, int flags)
{
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
    RawFailure failure = FailureOf(code, handle);
    sqlite3_close(handle);
    return failure;
}

RawFailure FailureOfExec(sqlite3* handle, const std::string& sql)
{
    char* text = nullptr;
    const int code = sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, &text);
    RawFailure failure{code, text != nullptr ? text : ""};
    sqlite3_free(text);
    return failure;
}

RawFailure FailureOfPrepare(sqlite3* handle, const std::string& sql)
{
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare(handle, sql.c_str(), -1, &statement, nullptr);
    RawFailure failure = FailureOf(code, handle);
    sqlite3_finalize(statement);
    return failure;
}

RawFailure FailureOfCloseWithAStatement()
{
    const RawSqlite raw(":memory:");
    const RawLegacyStatement statement(raw.Handle(), "SELECT 1");
    return FailureOf(sqlite3_close(raw.Handle()), raw.Handle());
}

RawLegacyStatement::RawLegacyStatement(sqlite3* handle, const std::string& sql) : m_handle(handle)
{
    const int code = sqlite3_prepare(handle, sql.c_str(), -1, &m_statement, nullptr);
    if (code != SQLITE_OK) {
        throw Error(code, handle, sql);
    }
}

RawWalk LegacyWalk(sqlite3* handle, const std::string& sql)
{
    RawLegacyStatement statement(handle, sql);
    RawWalk walk;
    do {
        walk.step = statement.Step();
    } while (walk.step.code == SQLITE_ROW);
    walk.finalize = statement.Finalize();
    return walk;
}

} // namespace Morvik::sql::tests
