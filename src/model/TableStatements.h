#pragma once

#include <sql/DbTableDefinition.h>

#include <string>

namespace Morvik::sql {

// The statements on tables. Names and conditions are written as given: not quoted, not escaped, not checked.

std::string CreateTableStatement(const DbTableDefinition& definition);

/// Selects the name of the table, letter case ignored. An apostrophe in the name breaks the query.
std::string TableExistsQuery(const std::string& table);

std::string DeleteRowsStatement(const std::string& table);
std::string DropTableStatement(const std::string& table);
std::string RenameTableStatement(const std::string& table, const std::string& newName);

/// Counts the rows that the condition selects, or all rows if it is empty. The condition includes its keyword.
std::string CountRowsQuery(const std::string& table, const std::string& condition);

std::string SelectAllQuery(const std::string& table);

} // namespace Morvik::sql
