#pragma once

#include <sql/DbTableDataWrite.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "model/SqlBuffer.h"

namespace Morvik::sql {

/// A cell that has no SQL text.
struct InvalidCell {
    int position;         ///< The cell's index in its row, from 0.
    std::uint32_t column; ///< The cell's `column` field.
};

/// A statement that writes rows, and its invalid cell. The text of a row stops at an invalid cell, after the comma
/// before it, so SQLite rejects most such statements. The statements are run anyway, because callers rely on the error:
/// SQLite's, or that of the cell if the statement succeeds.
struct WriteStatement {
    explicit WriteStatement(std::size_t expectedSize) : sql(expectedSize) {}

    void AppendRow(const DbTableRowValues& row);

    SqlBuffer sql;
    std::optional<InvalidCell> invalidCell; ///< The last invalid cell.
};

/// Inserts all rows. Names are written as given.
struct InsertStatement : WriteStatement {
    InsertStatement(const std::string& table, const DbTableDataWrite& data);
};

/// Assigns the first row to every row that the condition selects; the condition is a clause with its keyword.
struct UpdateStatement : WriteStatement {
    UpdateStatement(const std::string& table, const DbTableDataWrite& data, const std::string& condition);
};

/// Appends the message about the cell; its numbers are formatted as by a default stream.
void AppendInvalidCellMessage(SqlBuffer& message, const InvalidCell& cell);

} // namespace Morvik::sql
