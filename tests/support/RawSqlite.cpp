#include "support/RawSqlite.h"

#include <stdexcept>
#include <string_view>

#include <sqlite3.h>

namespace Morvik::sql::tests {

namespace {

// The result `code` of a call, with the connection's message if the call failed.
RawFailure ResultOf(int code, sqlite3* handle)
{
    return {code, code != SQLITE_OK ? sqlite3_errmsg(handle) : ""};
}

std::runtime_error Error(int code, sqlite3* handle, const std::string& what)
{
    return std::runtime_error("raw SQLite: code " + std::to_string(code) + ", " + sqlite3_errmsg(handle) + ": " + what);
}

std::string Hex(const unsigned char* bytes, int count)
{
    static constexpr char Digits[] = "0123456789ABCDEF";
    std::string text = "X'";
    for (int i = 0; i < count; ++i) {
        text += Digits[bytes[i] >> 4];
        text += Digits[bytes[i] & 15];
    }
    return text + "'";
}

std::string Quoted(sqlite3_stmt* statement, int column)
{
    const int type = sqlite3_column_type(statement, column);
    if (type == SQLITE_NULL) {
        return "NULL";
    }
    if (type == SQLITE_BLOB) {
        const int count = sqlite3_column_bytes(statement, column);
        return Hex(static_cast<const unsigned char*>(sqlite3_column_blob(statement, column)), count);
    }
    const auto* const characters = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    const std::string_view text(characters, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
    if (type != SQLITE_TEXT) {
        return std::string(text);
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted.append(c == '\'' ? 2 : 1, c);
    }
    return quoted + "'";
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
                row.push_back(Quoted(statement, column));
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

RawFailure FailureOfOpen(const std::string& path, int flags)
{
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
    RawFailure failure = ResultOf(code, handle);
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
    RawFailure failure = ResultOf(code, handle);
    sqlite3_finalize(statement);
    return failure;
}

RawFailure FailureOfCloseWithAStatement()
{
    RawSqlite raw(":memory:");
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(raw.Handle(), "SELECT 1", -1, &statement, nullptr);
    RawFailure failure = ResultOf(sqlite3_close(raw.Handle()), raw.Handle());
    sqlite3_finalize(statement);
    return failure;
}

RawWalk LegacyWalk(sqlite3* handle, const std::string& sql)
{
    sqlite3_stmt* statement = nullptr;
    const int prepared = sqlite3_prepare(handle, sql.c_str(), -1, &statement, nullptr);
    if (prepared != SQLITE_OK) {
        throw Error(prepared, handle, sql);
    }
    RawWalk walk;
    while ((walk.step.code = sqlite3_step(statement)) == SQLITE_ROW) {
        ++walk.rows;
    }
    walk.step.message = walk.step.code != SQLITE_DONE ? sqlite3_errmsg(handle) : "";
    walk.finalize = ResultOf(sqlite3_finalize(statement), handle);
    return walk;
}

} // namespace Morvik::sql::tests
