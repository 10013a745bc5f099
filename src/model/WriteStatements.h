#pragma once

#include <sql/DbTableDataWrite.h>

#include <optional>
#include <string>

#include "model/ValueLiteral.h"

namespace Morvik::sql {

/// A statement that writes rows. An invalid cell ends its row after the comma before it, so SQLite rejects most such
/// statements. They are run all the same: callers read SQLite's error, and the cell's only if the statement succeeds.
struct WriteStatement {
    std::string sql;
    std::optional<InvalidCell> invalidCell; ///< The last one.
};

/// Inserts all rows. Names are written as given.
WriteStatement InsertStatement(const std::string& table, const DbTableDataWrite& data);

/// Assigns the first row in every row that the condition selects, a clause with its keyword.
WriteStatement UpdateStatement(const std::string& table, const DbTableDataWrite& data, const std::string& condition);

/// The message about the cell, its numbers as a default stream writes them.
std::string InvalidCellMessage(const InvalidCell& cell);

} // namespace Morvik::sql
