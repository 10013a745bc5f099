#pragma once

#include <sql/DbTableRowValues.h>

#include <cstddef>

namespace Morvik::sql {

class SqlBuffer;

/// Appends the cell's SQL text to `sql` and returns whether there was any. Nothing is appended for a cell that cannot
/// be written: its tag has no text (Null, unknown tags), or its value is not the tag's alternative. Otherwise at least
/// one byte is appended.
bool ColumnValueAsString(const DbTableColumnValue& cell, SqlBuffer& sql);

/// The expected size of the text of ColumnValueAsString(), at most a few bytes too large. The text may be longer if it
/// has many quotes, or if it is a number in a locale with digit groups.
std::size_t ColumnValueSize(const DbTableColumnValue& cell);

/// Appends the literals of the row's cells, separated by ",". At the first invalid cell it stops, after the comma
/// before that cell, and returns it. Returns null if all cells are valid.
const DbTableColumnValue* AppendRowLiterals(SqlBuffer& sql, const DbTableRowValues& row);

/// The expected size of the text of AppendRowLiterals().
std::size_t RowLiteralsSize(const DbTableRowValues& row);

} // namespace Morvik::sql
