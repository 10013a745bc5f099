#pragma once

#include <sql/DbTableColumnValue.h>

#include <cstddef>

namespace Morvik::sql {

class StatementText;

/// Appends to `sql` the text that stands for the cell in a statement, and returns whether there was any. A cell whose
/// tag has no text (Null, unknown tags) or whose value is not of the tag's alternative appends nothing: it cannot be
/// written. Every text that is appended has at least one byte.
bool ColumnValueAsString(const DbTableColumnValue& cell, StatementText& sql);

/// The bytes to expect from ColumnValueAsString(), at most a few too many. A text that holds many quotes, and a number
/// in a locale with digit groups, may take more.
std::size_t ColumnValueSize(const DbTableColumnValue& cell);

} // namespace Morvik::sql
