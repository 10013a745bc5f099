#pragma once

#include <sql/DbTableDataWrite.h>

#include <optional>
#include <string>

#include "model/ValueLiteral.h"

namespace Morvik::sql {

/// A statement that writes rows, and its invalid cell. The text of a row stops at an invalid cell, after the comma
/// before it, so SQLite rejects most such statements. The statements are run anyway, because callers rely on the error:
/// SQLite's, or that of the cell if the statement succeeds.
struct WriteStatement {
    std::string sql;
    std::optional<InvalidCell> invalidCell; ///< The last invalid cell.
};

/// Inserts all rows. Names are written as given.
WriteStatement InsertStatement(const std::string& table, const DbTableDataWrite& data);

/// Assigns the first row to every row that the condition selects; the condition is a clause with its keyword.
WriteStatement UpdateStatement(const std::string& table, const DbTableDataWrite& data, const std::string& condition);

/// The message about the cell; its numbers are formatted as by a default stream.
std::string InvalidCellMessage(const InvalidCell& cell);

} // namespace Morvik::sql
