#pragma once

#include <sql/DbTableColumnValue.h>

#include <string>

namespace Morvik::sql::tests {

/// The text with its apostrophes doubled, as SQLite stores it.
std::string Doubled(const std::string& text);

/// The text as RawSqlite::Rows() writes it.
std::string Quoted(const std::string& text);

/// Reports a finding unless `stored`, a value as RawSqlite::Rows() writes it, is the value of the cell. `literal` is
/// the cell's text in the statement.
void RequireStoredAs(const DbTableColumnValue& cell, const std::string& literal, const std::string& stored);

} // namespace Morvik::sql::tests
