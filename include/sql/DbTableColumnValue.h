#pragma once

#include <sql/DbTableColumnType.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace Morvik::sql {

/// One cell: a value and the tag that says how it is written, or how it was read.
///
///     DbTableColumnValue{DbTableColumnType::Text, 0, std::string("door")}
///
/// The tag alone chooses how a cell is written, and `value` must then hold the alternative that belongs to it (int for
/// None and Integer, double for Real, std::string for Text, std::vector<char> for Blob); a cell whose tag and
/// alternative disagree is rejected as an invalid value.
///
/// What is written is SQL text, so mind that
/// - a text is stored with every apostrophe doubled (O'Brien becomes O''Brien);
/// - in UpdateTableValues a text that equals a column name of the table, in any letter case, or "rowid", "oid" or
///   "_rowid_" assigns that column's value, not the text;
/// - a text ends at its first zero byte in SQLite's eyes, so that one holding a zero byte breaks its statement;
/// - blob bytes are written as they are between double quotation marks: one that holds a double quotation mark or a
///   zero byte breaks its statement, and bytes from an untrusted source can change it. Bind blobs instead
///   (DatabaseApi::PrepareStatement and SqlCommand::BindBlob);
/// - a number is written as a default stream writes it, under the process-wide C++ locale.
///
/// Where memory may run out, move cells and read them in place: with the standard library of GCC 12, a copy of a
/// std::variant that fails to allocate ends the process instead of throwing. The library itself copies none.
struct DbTableColumnValue {
    /// How the cell is written, or the storage class it was read from.
    DbTableColumnType type = DbTableColumnType::None;

    /// The result column, counted from 0, that a read took the cell from; 0 otherwise. Writing only repeats it in the
    /// message about an invalid cell.
    std::uint32_t column = 0;

    /// The value. Integers are 32-bit: a wider one is read as its low 32 bits.
    std::variant<int, double, std::string, std::vector<char>> value{};
};

} // namespace Morvik::sql
