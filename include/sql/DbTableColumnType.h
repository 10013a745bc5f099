#pragma once

#include <sql/Config.h>

#include <cstdint>

namespace Morvik::sql {

/// Tags a cell value (DbTableColumnValue) and names the declared type of a column (DbTableColumnDefinition). The
/// values 1 to 5 are SQLite's numbers of its storage classes.
///
/// A cell that was read from an SQL NULL carries None, never Null. A cell tagged Null has no SQL text and cannot be
/// written. A column that is left out of an insert gets its default, which is NULL unless declared otherwise. To write
/// NULL, bind it or use Execute.
/// @ingroup rows
enum class DbTableColumnType : std::int32_t {
    /// No declared type; written like Integer. Also the tag of a cell read from NULL: that cell holds an empty text and
    /// therefore cannot be written back.
    None = 0,
    /// A 32-bit signed integer; the cell holds an int.
    Integer = 1,
    /// A floating-point number, written with 6 significant digits; the cell holds a double.
    Real = 2,
    /// A text in UTF-8; the cell holds a std::string.
    Text = 3,
    /// Bytes; the cell holds a std::vector<char>.
    Blob = 4,
    /// No SQL text: a cell with this tag is rejected by the write operations.
    Null = 5,
    /// The current UTC date and time as text, computed by SQLite when the statement runs; the cell's value is ignored.
    DateTimeNow = 6,
    /// The current local date and time as text, computed by SQLite; the cell's value is ignored.
    DateTimeNowLocalTime = 7,
    /// The current time in seconds since 1970-01-01 00:00 UTC, computed by SQLite; the cell's value is ignored. SQLite
    /// writes it as a text of digits, which a column of type INTEGER stores as a number.
    UnixTimeNow = 8,
    /// The current time as a Julian day number, computed by SQLite; the cell's value is ignored.
    JulianDayNow = 9,
};

} // namespace Morvik::sql
