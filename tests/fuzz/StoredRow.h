#pragma once

#include <sql/DbTableColumnValue.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// A row of values goes into a table of so many columns, without declared types, which is emptied first.
constexpr std::size_t MostStoredCells = 6;

/// Reports unless SQLite takes each literal as one value and stores what its cell stands for.
void RequireStored(const std::vector<DbTableColumnValue>& cells, const std::vector<std::string>& literals);

/// Reports unless the facade inserts the cells, updates the row with them and reads every text back with its
/// apostrophes doubled, except that an update reads a text that equals a column's name as that column.
void RequireWritten(const std::vector<DbTableColumnValue>& cells);

/// Reports unless SQLite rejects the row and nothing is written: a zero byte ends the statement within its text,
/// whatever stands before it.
void RequireRejected(const std::vector<DbTableColumnValue>& cells);

} // namespace Morvik::sql::tests
