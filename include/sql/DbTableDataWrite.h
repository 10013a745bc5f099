#pragma once

#include <sql/DbTableRowValues.h>

#include <string>
#include <vector>

namespace Morvik::sql {

/// What to write: the names of the target columns and the rows. WriteTableValues inserts all rows with one statement,
/// UpdateTableValues assigns the first row and ignores the others.
///
///     DbTableDataWrite data;
///     data.columns = {"name", "size"};
///     data.rows.push_back({{{.type = DbTableColumnType::Text, .value = "bash"},
///                           {.type = DbTableColumnType::Integer, .value = 7164}}});
struct DbTableDataWrite {
    /// Column names, written unquoted and unchecked: quote a name that holds a blank or a quote or is a keyword
    /// yourself, and take no name from an untrusted source. Empty names before the first non-empty one are left out; a
    /// later empty name leaves an empty place, which SQLite rejects.
    std::vector<std::string> columns{};

    /// The rows, each with its cells in the order of `columns`.
    std::vector<DbTableRowValues> rows{};
};

} // namespace Morvik::sql
