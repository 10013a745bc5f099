#pragma once

#include <sql/DbTableColumnValue.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// Stores a row of values in a table without declared types. The table has as many columns as the row and is emptied
/// first.
constexpr std::size_t MostStoredCells = 6;

/// Reports a finding unless SQLite takes each literal as one value and stores the value of its cell.
void RequireStored(const std::vector<DbTableColumnValue>& cells, const std::vector<std::string>& literals);

/// Reports a finding unless the facade inserts the cells, updates the row with them and reads every text back with its
/// apostrophes doubled. Exception: an update reads a text that equals a column's name as that column.
void RequireWritten(const std::vector<DbTableColumnValue>& cells);

/// Reports a finding unless SQLite rejects the row and nothing is written: the zero byte ends the statement inside its
/// text.
void RequireRejected(const std::vector<DbTableColumnValue>& cells);

} // namespace Morvik::sql::tests
