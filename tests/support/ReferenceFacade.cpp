#include "support/ReferenceFacade.h"

#include <sqlite3.h>

#include <sstream>

#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

namespace {

// Empty names are left out before the first name, and kept after it.
std::string ColumnList(const DbTableDataWrite& data)
{
    std::string list;
    for (const std::string& name : data.columns) {
        list += (list.empty() ? "" : ",") + name;
    }
    return list.empty() ? "" : " (" + list + ")";
}

DbTableColumnValue CellOf(const ReferenceValue& value, int position)
{
    const auto column = static_cast<std::uint32_t>(position);
    switch (value.GetValueType()) {
    case SQLITE_INTEGER:
        return {DbTableColumnType::Integer, column, value.GetValue<int>()};
    case SQLITE_FLOAT:
        return {DbTableColumnType::Real, column, value.GetValue<double>()};
    case SQLITE_TEXT:
        return {DbTableColumnType::Text, column, value.GetValue<std::string>()};
    case SQLITE_BLOB:
        return {DbTableColumnType::Blob, column, value.GetValue<std::vector<char>>()};
    default:
        return {DbTableColumnType::None, column, std::string()};
    }
}

} // namespace

bool ReferenceFacade::Fail(int code, const std::string& message) const
{
    m_code = code;
    m_message = message;
    return false;
}

bool ReferenceFacade::CopyError(const ReferenceError& lower) const
{
    m_code = lower.GetLastError();
    m_message = lower.GetLastErrorMsg();
    return m_code == 0;
}

bool ReferenceFacade::OpenDatabase(const std::string& path, bool readOnly)
{
    m_code = 0;
    return m_database.Open(path, readOnly) || CopyError(m_database);
}

bool ReferenceFacade::CloseDatabase()
{
    m_code = 0;
    return m_database.Close() || CopyError(m_database);
}

bool ReferenceFacade::Run(const std::string& sql)
{
    ReferenceCommand command(m_database);
    return command.Execute(sql) || CopyError(command);
}

bool ReferenceFacade::Execute(const std::string& sql)
{
    m_code = 0;
    return sql.empty() ? Fail(112, "Missing command.") : Run(sql);
}

bool ReferenceFacade::CheckOpen() const
{
    m_code = 0;
    return IsOpen() || Fail(111, "Database isn't open.");
}

bool ReferenceFacade::CheckName(const std::string& table) const
{
    m_code = 0;
    return !table.empty() || Fail(112, "Missing table name.");
}

bool ReferenceFacade::CreateTable(const DbTableDefinition& definition)
{
    return CheckOpen() && CheckName(definition.name) && Run(ReferenceCreateStatement(definition));
}

// An error of the step is not copied.
bool ReferenceFacade::TestForTable(const std::string& table) const
{
    ReferenceTable test(m_database);
    return CheckName(table) &&
           (test.Open("SELECT name FROM sqlite_master WHERE type = 'table' AND name = '" + table +
                      "' COLLATE NOCASE") ||
            CopyError(test)) &&
           test.ReadNext();
}

bool ReferenceFacade::ExistsTable(const std::string& table, int& result) const
{
    const bool exists = TestForTable(table);
    result = m_code;
    return exists;
}

bool ReferenceFacade::DropTable(const std::string& table)
{
    if (!CheckOpen()) {
        return false;
    }
    return TestForTable(table) ? Run("DELETE FROM " + table) && Run("DROP TABLE IF EXISTS " + table) : m_code == 0;
}

bool ReferenceFacade::AlterTable(const std::string& table, const std::string& newName)
{
    if (!CheckOpen()) {
        return false;
    }
    return TestForTable(table) ? Run("ALTER TABLE " + table + " RENAME TO " + newName)
                               : Fail(113, "No table exists: " + table);
}

// The literals of the row up to the first invalid cell, which leaves its error.
std::string ReferenceFacade::CellList(const DbTableRowValues& row)
{
    std::string list;
    for (std::size_t position = 0; position < row.cells.size(); ++position) {
        const std::string literal = ReferenceLiteral(row.cells[position]);
        if (literal.empty()) {
            std::ostringstream message;
            message << "Invalid column value: (row | column)" << static_cast<int>(position) << '|'
                    << row.cells[position].column;
            Fail(112, message.str());
            break;
        }
        list += literal;
        list += position + 1 < row.cells.size() ? "," : "";
    }
    return list;
}

bool ReferenceFacade::WriteTableValues(const std::string& table, const DbTableDataWrite& data)
{
    if (!CheckName(table)) {
        return false;
    }
    std::string sql = "INSERT INTO " + table + ColumnList(data) + " VALUES";
    for (std::size_t row = 0; row < data.rows.size(); ++row) {
        sql += (row == 0 ? " (" : " ,(") + CellList(data.rows[row]) + ")";
    }
    Run(sql);
    return m_code == 0;
}

bool ReferenceFacade::UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                                        const std::string& condition)
{
    if (!CheckName(table)) {
        return false;
    }
    if (data.columns.empty()) {
        return Fail(112, "Missing column names.");
    }
    const std::string values = data.rows.empty() ? "" : CellList(data.rows.front());
    Run("UPDATE " + table + " SET" + ColumnList(data) + "=" + (values.empty() ? "" : "(" + values + ") ") + condition);
    return m_code == 0;
}

bool ReferenceFacade::OpenQuery(const std::string& sql) const
{
    m_table.Close();
    return CheckOpen() && (!sql.empty() || Fail(112, "Missing query SQL statement.")) &&
           (m_table.Open(sql) || CopyError(m_table));
}

// While the code of an earlier failure is set, no cell counts as converted.
void ReferenceFacade::ReadRow(DbTableRowValues& row) const
{
    row.cells.clear();
    for (int column = 0; m_code == 0 && column < m_table.Columns(); ++column) {
        row.cells.push_back(CellOf(m_table[column], column));
    }
}

// If the query has no statement, the loop ends at once. The error is always copied from the cursor.
bool ReferenceFacade::ReadValues(const std::string& sql, DbTableData& data) const
{
    if (!OpenQuery(sql)) {
        return false;
    }
    while (m_table.ReadNext()) {
        ReadRow(data.rows.emplace_back());
    }
    return CopyError(m_table);
}

bool ReferenceFacade::ReadTableValues(const std::string& table, DbTableData& data) const
{
    return ReadValues("SELECT * FROM " + table, data);
}

bool ReferenceFacade::SqlQueryBegin(const std::string& sql)
{
    m_row.cells.clear();
    return OpenQuery(sql);
}

bool ReferenceFacade::ReadNextRow(DbTableRowValues& row) const
{
    if (!m_table.IsOpen()) {
        return Fail(111, "Table isn't open.");
    }
    if (!m_table.ReadNext()) {
        CopyError(m_table);
        return false;
    }
    ReadRow(row);
    return m_code == 0;
}

bool ReferenceFacade::CloseReadTable() const
{
    m_code = 0;
    return m_table.Close() || CopyError(m_table);
}

int ReferenceFacade::ExistData(const std::string& table, const std::string& condition, int& result)
{
    int count = 0;
    result = 0;
    try {
        const std::string sql = "SELECT count(*) FROM " + table + (condition.empty() ? "" : " " + condition);
        if (!TestForTable(table) || !SqlQueryBegin(sql)) {
            result = m_code;
            return 0;
        }
        DbTableRowValues row;
        if (ReadNextRow(row) && !row.cells.empty()) {
            count = std::get<int>(row.cells.front().value);
        }
    } catch (const std::exception&) {
        result = 110;
    }
    if (!CloseReadTable()) {
        result = m_code;
    }
    return count;
}

} // namespace Morvik::sql::tests
