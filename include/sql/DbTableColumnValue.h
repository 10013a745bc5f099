#pragma once

#include <sql/DbTableColumnType.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace Morvik::sql {

/// One cell: a value and the tag that says how it is written, or how it was read.
///
///     DbTableColumnValue{.type = DbTableColumnType::Text, .value = "door"}
///
/// Name the members: {DbTableColumnType::Integer, 5} compiles without a warning, but 5 becomes `column`, and the cell
/// holds 0.
///
/// The tag alone chooses how a cell is written, and `value` must then hold the alternative that belongs to it (int for
/// None and Integer, double for Real, std::string for Text, std::vector<char> for Blob); a cell whose tag and
/// alternative disagree is rejected as an invalid value.
///
/// A cell is written as SQL text, with these effects:
/// - A text is stored with every apostrophe doubled (O'Brien becomes O''Brien), so a bound O'Brien does not find it. Do
///   not mix cells and bound texts in one column.
/// - In UpdateTableValues, a text or blob that equals a column name of the table, in any letter case, or "rowid", "oid"
///   or "_rowid_", stores that column's content. A value from an untrusted source can copy secret content this way:
///   bind it.
/// - SQLite reads a statement up to its first zero byte, so a text that contains a zero byte breaks its statement.
/// - Blob bytes are written unchanged between double quotation marks. A blob that contains a double quotation mark or a
///   zero byte breaks its statement, and bytes from an untrusted source can change the statement. Bind blobs instead
///   (DatabaseApi::PrepareStatement and SqlCommand::BindBlob).
/// - A number is written as a default stream writes it, with the process-wide C++ locale. A decimal comma or a
///   thousands separator makes the statement fail or silently stores a wrong number (1234 as 1.234).
/// - Texts and blobs need a SQLite that accepts texts between double quotation marks. A SQLite built with SQLITE_DQS=0
///   does not.
///
/// If memory may run out, move cells and read them in place: with the standard library of GCC 12, a program compiled at
/// -O1 or higher has undefined behaviour when a copy of a single text cell fails to allocate. The library itself copies
/// no cells.
/// @ingroup rows
struct DbTableColumnValue {
    /// How the cell is written, or the storage class that it was read from.
    DbTableColumnType type = DbTableColumnType::None;

    /// The index, from 0, of the result column that the cell was read from; 0 for a cell that was not read. A write
    /// uses it only in the message about an invalid cell.
    std::uint32_t column = 0;

    /// The value. Integers are 32-bit: a wider integer is read as its low 32 bits.
    std::variant<int, double, std::string, std::vector<char>> value{};
};

} // namespace Morvik::sql
