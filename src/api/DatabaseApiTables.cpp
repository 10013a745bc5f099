#include <variant>

#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"
#include "model/JoinedList.h"

namespace Morvik::sql {

std::string DatabaseApi::Impl::TableDefinitionToString(const DbTableDefinition& definition)
{
    std::vector<std::string> columns;
    columns.reserve(definition.columns.size());
    for (const DbTableColumnDefinition& column : definition.columns) {
        columns.push_back(column.ColumnDefinitionAsString());
    }

    std::string sql = "CREATE TABLE IF NOT EXISTS " + definition.name + " (";
    AppendJoined(sql, columns);
    const std::string constraints = definition.TableConstraintAsString();
    if (!constraints.empty()) {
        sql += ',';
        sql += constraints;
    }
    sql += ')';
    return sql;
}

bool DatabaseApi::Impl::CreateTable(const DbTableDefinition& definition)
{
    ResetCode();
    if (!CheckOpen()) {
        return false;
    }
    if (definition.name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    const std::string sql = TableDefinitionToString(definition);
    if (sql.empty()) {
        return Fail(MissingValue, "SQL statement is empty.");
    }
    return RunCommand(sql);
}

bool DatabaseApi::Impl::ExistsTable(const std::string& name)
{
    ResetCode();
    if (name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    // A cursor of its own leaves a row-by-row query in progress undisturbed.
    const SqlTable test(database);
    // The name stands in the text as given, its apostrophes not doubled.
    if (!test.Open("SELECT name FROM sqlite_master WHERE type = 'table' AND name = '" + name + "' COLLATE NOCASE")) {
        CopyRecord(test);
        return false;
    }
    // A failed step counts as "no such table", and its code is not copied.
    return test.ReadNext();
}

bool DatabaseApi::Impl::DropTable(const std::string& name)
{
    ResetCode();
    if (!CheckOpen()) {
        return false;
    }
    if (!ExistsTable(name)) {
        return Succeeded();
    }
    return Execute("DELETE FROM " + name) && Execute("DROP TABLE IF EXISTS " + name);
}

bool DatabaseApi::Impl::AlterTable(const std::string& name, const std::string& newName)
{
    ResetCode();
    if (!CheckOpen()) {
        return false;
    }
    if (!ExistsTable(name)) {
        // Replaces whatever the test recorded, a failed query and a missing name included.
        return Fail(NoSuchTable, "No table exists: " + name);
    }
    return Execute("ALTER TABLE " + name + " RENAME TO " + newName);
}

bool DatabaseApi::CreateTable(const DbTableDefinition& definition)
{
    return m_impl->CreateTable(definition);
}

bool DatabaseApi::ExistsTable(const std::string& table, int& result) const
{
    const bool exists = m_impl->ExistsTable(table);
    result = m_impl->code;
    return exists;
}

bool DatabaseApi::DropTable(const std::string& table)
{
    return m_impl->DropTable(table);
}

bool DatabaseApi::AlterTable(const std::string& table, const std::string& newName)
{
    return m_impl->AlterTable(table, newName);
}

int DatabaseApi::ExistData(const std::string& table, const std::string& condition, int& result)
{
    int count = 0;
    result = 0;
    try {
        if (!m_impl->ExistsTable(table)) {
            result = m_impl->code;
            return 0;
        }
        std::string sql = "SELECT count(*) FROM " + table;
        if (!condition.empty()) {
            sql += ' ';
            sql += condition;
        }
        if (!SqlQueryBegin(sql)) {
            result = m_impl->code;
            return 0;
        }
        DbTableRowValues row;
        if (ReadNextRow(row) && !row.cells.empty()) {
            count = std::get<int>(row.cells.front().value);
        }
    } catch (...) {
        result = CaughtException;
    }
    if (!CloseReadTable()) {
        result = m_impl->code;
    }
    return count;
}

} // namespace Morvik::sql
