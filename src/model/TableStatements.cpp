#include "model/TableStatements.h"

#include <string_view>

#include "model/Strings.h"

namespace Morvik::sql {

std::string CreateTableStatement(const DbTableDefinition& definition)
{
    std::string columns;
    for (const DbTableColumnDefinition& column : definition.columns) {
        StrAppendItem(columns, column.ColumnDefinitionAsString());
    }
    const std::string constraints = definition.TableConstraintAsString();
    const std::string_view separator = constraints.empty() ? "" : ",";
    return StrCat({"CREATE TABLE IF NOT EXISTS ", definition.name, " (", columns, separator, constraints, ")"});
}

std::string TableExistsQuery(const std::string& table)
{
    return StrCat({"SELECT name FROM sqlite_master WHERE type = 'table' AND name = '", table, "' COLLATE NOCASE"});
}

std::string DeleteRowsStatement(const std::string& table)
{
    return StrCat({"DELETE FROM ", table});
}

std::string DropTableStatement(const std::string& table)
{
    return StrCat({"DROP TABLE IF EXISTS ", table});
}

std::string RenameTableStatement(const std::string& table, const std::string& newName)
{
    return StrCat({"ALTER TABLE ", table, " RENAME TO ", newName});
}

std::string CountRowsQuery(const std::string& table, const std::string& condition)
{
    return StrCat({"SELECT count(*) FROM ", table, condition.empty() ? "" : " ", condition});
}

std::string SelectAllQuery(const std::string& table)
{
    return StrCat({"SELECT * FROM ", table});
}

} // namespace Morvik::sql
