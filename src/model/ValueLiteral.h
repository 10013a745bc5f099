#pragma once

#include <sql/DbTableRowValues.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Morvik::sql {

class SqlBuffer;

/// Appends to `sql` the text that stands for the cell in a statement, and returns whether there was any. A cell whose
/// tag has no text (Null, unknown tags) or whose value is not of the tag's alternative appends nothing: it cannot be
/// written. Every text that is appended has at least one byte.
bool ColumnValueAsString(const DbTableColumnValue& cell, SqlBuffer& sql);

/// The bytes to expect from ColumnValueAsString(), at most a few too many. A text that holds many quotes, and a number
/// in a locale with digit groups, may take more.
std::size_t ColumnValueSize(const DbTableColumnValue& cell);

/// A cell that has no SQL text.
struct InvalidCell {
    int position;         ///< Its index in its row.
    std::uint32_t column; ///< Its `column` field.
};

/// Appends the literals of the row's cells, separated by ",". Stops after the comma before an invalid cell and returns
/// it.
std::optional<InvalidCell> AppendRowLiterals(SqlBuffer& sql, const DbTableRowValues& row);

/// The bytes to expect from AppendRowLiterals().
std::size_t RowLiteralsSize(const DbTableRowValues& row);

} // namespace Morvik::sql
