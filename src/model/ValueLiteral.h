#pragma once

#include <sql/DbTableColumnValue.h>

#include <cstddef>
#include <string>

namespace Morvik::sql {

/// Appends to `sql` the text that stands for the cell in a statement, and returns whether there was any. A cell whose
/// tag has no text (Null, unknown tags) or whose value is not of the tag's alternative appends nothing: it cannot be
/// written. Every text that is appended has at least one byte.
bool ColumnValueAsString(const DbTableColumnValue& cell, std::string& sql);

/// The bytes to reserve for what ColumnValueAsString() appends: exact for a text or blob, at most a few too many for a
/// number. A locale with digit groups may write longer numbers.
std::size_t ColumnValueSize(const DbTableColumnValue& cell);

} // namespace Morvik::sql
