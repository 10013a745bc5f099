#pragma once

#include <sql/DbTableColumnValue.h>

#include <string>

namespace Morvik::sql::tests {

/// The text with its apostrophes doubled, as SQLite stores it.
std::string Doubled(const std::string& text);

/// The text as PlainSqlite::Rows() writes it.
std::string Quoted(const std::string& text);

/// Reports unless `stored`, a value as PlainSqlite::Rows() writes it, is what the cell stands for. `literal` is the
/// text that stood for the cell in the statement.
void RequireStoredAs(const DbTableColumnValue& cell, const std::string& literal, const std::string& stored);

} // namespace Morvik::sql::tests
