#pragma once

#include <sql/DbTableColumnValue.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The functions store a row of values in a table without declared types, which is emptied first.
constexpr std::size_t MostStoredCells = 6;

/// Reports a finding unless the facade inserts the cells, whose texts in the statement are `literals`, and SQLite
/// stores the value of each cell, a text with its apostrophes doubled. An update with the same cells must store the
/// same texts, except that it reads a text that equals a column's name as that column.
void RequireWritten(const std::vector<DbTableColumnValue>& cells, const std::vector<std::string>& literals);

/// Reports a finding unless SQLite rejects the row and nothing is written: the zero byte ends the statement inside its
/// text.
void RequireRejected(const std::vector<DbTableColumnValue>& cells);

} // namespace Morvik::sql::tests
