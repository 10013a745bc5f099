#pragma once

#include <sql/DbTableColumnValue.h>
#include <sql/DbTableRowValues.h>

#include <cstddef>
#include <string>

namespace examples {

inline Morvik::sql::DbTableColumnValue TextCell(const std::string& text)
{
    return {Morvik::sql::DbTableColumnType::Text, 0, text};
}

inline Morvik::sql::DbTableColumnValue IntegerCell(int number)
{
    return {Morvik::sql::DbTableColumnType::Integer, 0, number};
}

inline Morvik::sql::DbTableColumnValue RealCell(double number)
{
    return {Morvik::sql::DbTableColumnType::Real, 0, number};
}

/// The time at which SQLite runs the statement, in seconds since 1970.
inline Morvik::sql::DbTableColumnValue UnixTimeCell()
{
    return {Morvik::sql::DbTableColumnType::UnixTimeNow, 0, 0};
}

/// A cell holds no more than 32 bits of an integer. A wider number travels as text: SQLite makes a number of it when it
/// is stored in an INTEGER column, and WideIntegerOf() reads it back.
inline Morvik::sql::DbTableColumnValue WideIntegerCell(long long number)
{
    return TextCell(std::to_string(number));
}

inline const std::string& TextOf(const Morvik::sql::DbTableRowValues& row, std::size_t column)
{
    return std::get<std::string>(row.cells.at(column).value);
}

inline int IntegerOf(const Morvik::sql::DbTableRowValues& row, std::size_t column)
{
    return std::get<int>(row.cells.at(column).value);
}

inline double RealOf(const Morvik::sql::DbTableRowValues& row, std::size_t column)
{
    return std::get<double>(row.cells.at(column).value);
}

/// The number in a column that the query selects as text: "CAST(sum(size) AS TEXT)".
inline long long WideIntegerOf(const Morvik::sql::DbTableRowValues& row, std::size_t column)
{
    return std::stoll(TextOf(row, column));
}

} // namespace examples
