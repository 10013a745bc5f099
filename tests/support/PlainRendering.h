#pragma once

#include <sql/DbTableColumnValue.h>
#include <sql/DbTableDefinition.h>

#include <string>

// The texts that the library must produce, written by a simple second implementation with a stream.

namespace Morvik::sql::tests {

/// The cell's SQL text; empty when it has none.
std::string PlainLiteral(const DbTableColumnValue& cell);

std::string PlainColumnConstraints(const DbTableColumnDefinition& column);
std::string PlainColumn(const DbTableColumnDefinition& column);
std::string PlainForeignKey(const DbTableConstraints& constraints);
std::string PlainTableConstraints(const DbTableConstraints& constraints);

/// The CREATE TABLE statement of a definition.
std::string PlainCreateStatement(const DbTableDefinition& definition);

} // namespace Morvik::sql::tests
