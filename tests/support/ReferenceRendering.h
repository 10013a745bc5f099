#pragma once

#include <sql/DbTableColumnValue.h>
#include <sql/DbTableDefinition.h>

#include <string>

// The texts that the library must produce, written by a simple second implementation with a stream.

namespace Morvik::sql::tests {

/// The cell's SQL text; empty when it has none.
std::string ReferenceLiteral(const DbTableColumnValue& cell);

std::string ReferenceColumnConstraints(const DbTableColumnDefinition& column);
std::string ReferenceColumn(const DbTableColumnDefinition& column);
std::string ReferenceForeignKey(const DbTableConstraints& constraints);
std::string ReferenceTableConstraints(const DbTableConstraints& constraints);

/// The CREATE TABLE statement of a definition.
std::string ReferenceCreateStatement(const DbTableDefinition& definition);

/// The query with which the facade tests whether a table exists.
inline std::string TableExistsQuery(const std::string& table)
{
    return "SELECT name FROM sqlite_master WHERE type = 'table' AND name = '" + table + "' COLLATE NOCASE";
}

} // namespace Morvik::sql::tests
