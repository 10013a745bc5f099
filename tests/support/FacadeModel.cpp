#include "support/FacadeModel.h"

#include <sqlite3.h>

#include <sstream>

#include "support/PlainRendering.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

FacadeModel::~FacadeModel()
{
    sqlite3_finalize(m_cursor);
    sqlite3_close(m_handle);
}

bool FacadeModel::Fail(int failureCode, const std::string& failureMessage)
{
    code = failureCode;
    message = failureMessage;
    return false;
}

bool FacadeModel::Copy(const Record& record)
{
    code = record.code;
    message = record.message;
    return code == 0;
}

bool FacadeModel::OpenDatabase(const std::string& path, const std::string& ownPath, bool readOnly, bool directoryFails)
{
    if (m_handle != nullptr) {
        return Copy(m_connectionRecord);
    }
    code = 0;
    if (directoryFails) {
        m_connectionRecord = {111, "Create directory failed: " + path};
        return Copy(m_connectionRecord);
    }
    const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    m_connectionRecord = {sqlite3_open_v2(ownPath.c_str(), &m_handle, flags, nullptr), ""};
    if (m_connectionRecord.code != SQLITE_OK) {
        m_connectionRecord.message = sqlite3_errmsg(m_handle);
        sqlite3_close(m_handle);
        m_handle = nullptr;
        Copy(m_connectionRecord);
    }
    return code == 0;
}

bool FacadeModel::CloseDatabase()
{
    code = 0;
    if (m_handle == nullptr) {
        return true;
    }
    m_connectionRecord = {sqlite3_close(m_handle), ""};
    if (m_connectionRecord.code == SQLITE_OK) {
        m_handle = nullptr;
        return true;
    }
    m_connectionRecord.message = sqlite3_errmsg(m_handle);
    return Copy(m_connectionRecord);
}

bool FacadeModel::RunStatement(const std::string& sql)
{
    const RawFailure failure = FailureOfExec(m_handle, sql);
    return failure.code == SQLITE_OK || Fail(failure.code, failure.message);
}

bool FacadeModel::Execute(const std::string& sql)
{
    code = 0;
    return sql.empty() ? Fail(112, "Missing command.") : RunStatement(sql);
}

bool FacadeModel::CreateTable(const DbTableDefinition& definition)
{
    code = 0;
    if (!IsOpen()) {
        return Fail(111, "Database isn't open.");
    }
    return definition.name.empty() ? Fail(112, "Missing table name.") : RunStatement(PlainCreateStatement(definition));
}

bool FacadeModel::TestForTable(const std::string& table)
{
    code = 0;
    if (table.empty()) {
        return Fail(112, "Missing table name.");
    }
    const std::string sql =
        "SELECT name FROM sqlite_master WHERE type = 'table' AND name = '" + table + "' COLLATE NOCASE";
    sqlite3_stmt* statement = nullptr;
    const int prepared = sqlite3_prepare(m_handle, sql.c_str(), -1, &statement, nullptr);
    if (prepared != SQLITE_OK) {
        return Fail(prepared, sqlite3_errmsg(m_handle));
    }
    const bool found = sqlite3_step(statement) == SQLITE_ROW;
    sqlite3_finalize(statement);
    return found;
}

bool FacadeModel::ExistsTable(const std::string& table, int& result)
{
    const bool found = TestForTable(table);
    result = code;
    return found;
}

bool FacadeModel::DropTable(const std::string& table)
{
    code = 0;
    if (!IsOpen()) {
        return Fail(111, "Database isn't open.");
    }
    if (!TestForTable(table)) {
        return code == 0;
    }
    return RunStatement("DELETE FROM " + table) && RunStatement("DROP TABLE IF EXISTS " + table);
}

bool FacadeModel::AlterTable(const std::string& table, const std::string& newName)
{
    code = 0;
    if (!IsOpen()) {
        return Fail(111, "Database isn't open.");
    }
    if (!TestForTable(table)) {
        return Fail(113, "No table exists: " + table);
    }
    code = 0;
    return RunStatement("ALTER TABLE " + table + " RENAME TO " + newName);
}

std::string FacadeModel::PlainColumnList(const DbTableDataWrite& data) const
{
    std::string list;
    for (const std::string& name : data.columns) {
        if (!list.empty()) {
            list += ',';
        }
        list += name;
    }
    return list.empty() ? "" : " (" + list + ")";
}

std::string FacadeModel::PlainCells(const DbTableRowValues& row)
{
    std::string list;
    for (std::size_t position = 0; position < row.cells.size(); ++position) {
        const std::string literal = PlainLiteral(row.cells[position]);
        if (literal.empty()) {
            std::ostringstream text;
            text << "Invalid column value: (row | column)" << static_cast<int>(position) << '|'
                 << row.cells[position].column;
            Fail(112, text.str());
            break;
        }
        list += literal;
        if (position + 1 < row.cells.size()) {
            list += ',';
        }
    }
    return list;
}

bool FacadeModel::WriteTableValues(const std::string& table, const DbTableDataWrite& data)
{
    code = 0;
    if (table.empty()) {
        return Fail(112, "Missing table name.");
    }
    std::string sql = "INSERT INTO " + table + PlainColumnList(data) + " VALUES";
    for (std::size_t row = 0; row < data.rows.size(); ++row) {
        sql += row == 0 ? " (" : " ,(";
        sql += PlainCells(data.rows[row]) + ")";
    }
    RunStatement(sql);
    return code == 0;
}

bool FacadeModel::UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                                    const std::string& condition)
{
    code = 0;
    if (table.empty()) {
        return Fail(112, "Missing table name.");
    }
    if (data.columns.empty()) {
        return Fail(112, "Missing column names.");
    }
    std::string sql = "UPDATE " + table + " SET" + PlainColumnList(data) + "=";
    if (!data.rows.empty()) {
        const std::string values = PlainCells(data.rows.front());
        sql += values.empty() ? "" : "(" + values + ") ";
    }
    RunStatement(sql + condition);
    return code == 0;
}

bool FacadeModel::OpenQuery(const std::string& sql)
{
    CloseCursor();
    code = 0;
    if (!IsOpen()) {
        return Fail(111, "Database isn't open.");
    }
    if (sql.empty()) {
        return Fail(112, "Missing query SQL statement.");
    }
    m_cursorRecord = {sqlite3_prepare(m_handle, sql.c_str(), -1, &m_cursor, nullptr), ""};
    if (m_cursorRecord.code != SQLITE_OK) {
        m_cursorRecord.message = sqlite3_errmsg(m_handle);
    }
    return m_cursorRecord.code == SQLITE_OK || Copy(m_cursorRecord);
}

bool FacadeModel::StepCursor()
{
    const int stepped = sqlite3_step(m_cursor);
    m_cursorRecord = {stepped == SQLITE_DONE ? 0 : stepped, ""};
    if (stepped != SQLITE_ROW && stepped != SQLITE_DONE) {
        m_cursorRecord.message = sqlite3_errmsg(m_handle);
    }
    return stepped == SQLITE_ROW;
}

void FacadeModel::CloseCursor()
{
    if (m_cursor != nullptr) {
        m_cursorRecord = {sqlite3_finalize(m_cursor), ""};
        if (m_cursorRecord.code != SQLITE_OK) {
            m_cursorRecord.message = sqlite3_errmsg(m_handle);
        }
        m_cursor = nullptr;
    }
}

void FacadeModel::ConvertRow(DescribedRow& row)
{
    row.clear();
    if (code != 0) {
        return;
    }
    DbTableRowValues cells;
    for (int column = 0; column < sqlite3_column_count(m_cursor); ++column) {
        DbTableColumnValue& cell = cells.cells.emplace_back();
        cell.column = static_cast<std::uint32_t>(column);
        switch (sqlite3_column_type(m_cursor, column)) {
        case SQLITE_INTEGER:
            cell.type = DbTableColumnType::Integer;
            cell.value = sqlite3_column_int(m_cursor, column);
            break;
        case SQLITE_FLOAT:
            cell.type = DbTableColumnType::Real;
            cell.value = sqlite3_column_double(m_cursor, column);
            break;
        case SQLITE_TEXT:
            cell.type = DbTableColumnType::Text;
            cell.value = std::string(reinterpret_cast<const char*>(sqlite3_column_text(m_cursor, column)));
            break;
        case SQLITE_BLOB: {
            const int size = sqlite3_column_bytes(m_cursor, column);
            const char* bytes = static_cast<const char*>(sqlite3_column_blob(m_cursor, column));
            cell.type = DbTableColumnType::Blob;
            cell.value = std::vector<char>(bytes, bytes + size);
            break;
        }
        default:
            cell.value = std::string();
            break;
        }
    }
    row = Described(cells);
}

bool FacadeModel::ReadValues(const std::string& sql, std::vector<DescribedRow>& rows)
{
    if (!OpenQuery(sql)) {
        return false;
    }
    while (m_cursor != nullptr && StepCursor()) {
        ConvertRow(rows.emplace_back());
    }
    return Copy(m_cursorRecord);
}

bool FacadeModel::ReadTableValues(const std::string& table, std::vector<DescribedRow>& rows)
{
    return ReadValues("SELECT * FROM " + table, rows);
}

bool FacadeModel::SqlQueryBegin(const std::string& sql)
{
    currentRow.clear();
    return OpenQuery(sql);
}

bool FacadeModel::ReadNextRow(DescribedRow& row)
{
    if (m_cursor == nullptr) {
        return Fail(111, "Table isn't open.");
    }
    if (!StepCursor()) {
        Copy(m_cursorRecord);
        return false;
    }
    ConvertRow(row);
    return code == 0;
}

bool FacadeModel::CloseReadTable()
{
    code = 0;
    if (m_cursor == nullptr) {
        return true;
    }
    CloseCursor();
    return m_cursorRecord.code == 0 || Copy(m_cursorRecord);
}

int FacadeModel::ExistData(const std::string& table, const std::string& condition, int& result)
{
    static const std::string Integer = "1@0:0:";
    int count = 0;
    result = 0;
    if (!TestForTable(table) ||
        !SqlQueryBegin("SELECT count(*) FROM " + table + (condition.empty() ? "" : " " + condition))) {
        result = code;
        return 0;
    }
    DescribedRow row;
    if (ReadNextRow(row) && !row.empty()) {
        if (row.front().starts_with(Integer)) {
            count = std::stoi(row.front().substr(Integer.size()));
        } else {
            result = 110;
        }
    }
    if (!CloseReadTable()) {
        result = code;
    }
    return count;
}

int FacadeModel::PrepareStatement(const std::string& sql) const
{
    sqlite3_stmt* statement = nullptr;
    const int prepared = sqlite3_prepare_v2(m_handle, sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
    sqlite3_finalize(statement);
    return prepared;
}

} // namespace Morvik::sql::tests
