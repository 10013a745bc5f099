#include <variant>

#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"
#include "model/TableStatements.h"

namespace Morvik::sql {

std::string DatabaseApi::Impl::TableDefinitionToString(const DbTableDefinition& definition)
{
    return CreateTableStatement(definition);
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
    return RunDefinition(TableDefinitionToString(definition));
}

bool DatabaseApi::Impl::RunDefinition(const std::string& sql)
{
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
    // A separate cursor leaves a row-by-row query in progress undisturbed.
    const SqlTable test(database);
    if (!test.Open(TableExistsQuery(name))) {
        CopyErrorFrom(test);
        return false;
    }
    // A failed step counts as "no such table", and its code is not copied.
    return test.ReadNext();
}

bool DatabaseApi::Impl::DropTable(const std::string& name)
{
    if (!CheckOpen()) {
        return false;
    }
    if (!ExistsTable(name)) {
        return Succeeded();
    }
    return Execute(DeleteRowsStatement(name)) && Execute(DropTableStatement(name));
}

bool DatabaseApi::Impl::AlterTable(const std::string& name, const std::string& newName)
{
    if (!CheckOpen()) {
        return false;
    }
    if (!ExistsTable(name)) {
        // Replaces the error that the test set, whether the query failed or the name was missing.
        return Fail(NoSuchTable, "No table exists: " + name);
    }
    return Execute(RenameTableStatement(name, newName));
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
        if (!SqlQueryBegin(CountRowsQuery(table, condition))) {
            result = m_impl->code;
            return 0;
        }
        DbTableRowValues row;
        if (ReadNextRow(row) && !row.cells.empty()) {
            const int* const counted = std::get_if<int>(&row.cells.front().value);
            if (counted != nullptr) {
                count = *counted;
            } else {
                result = CaughtException;
            }
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
