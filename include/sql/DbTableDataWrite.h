#pragma once

#include <sql/DbTableRowValues.h>

#include <string>
#include <vector>

namespace Morvik::sql {

/// The names of the target columns and the rows to write. WriteTableValues inserts all rows with one statement.
/// UpdateTableValues assigns the first row and ignores the others.
///
///     DbTableDataWrite data;
///     data.columns = {"name", "size"};
///     data.rows.push_back({{{.type = DbTableColumnType::Text, .value = "bash"},
///                           {.type = DbTableColumnType::Integer, .value = 7164}}});
/// @ingroup rows
struct DbTableDataWrite {
    /// Column names, written unquoted and unchecked. If a name contains a blank or a quote or is a keyword, quote it
    /// yourself. Take no name from an untrusted source. Empty names before the first non-empty name are left out; a
    /// later empty name leaves nothing between its commas, and SQLite rejects the statement.
    std::vector<std::string> columns{};

    /// The rows, each with its cells in the order of `columns`.
    std::vector<DbTableRowValues> rows{};
};

} // namespace Morvik::sql
