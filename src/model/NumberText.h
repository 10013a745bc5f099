#pragma once

#include <cstddef>
#include <cstdint>

namespace Morvik::sql {

class SqlBuffer;

/// Appends the number as a new default stream writes it under the process-wide C++ locale: a locale with digit
/// groups or a decimal comma shows. Returns whether there was any text; a facet of the application's locale may write
/// none, or throw. Throws std::bad_alloc rather than leave a number cut short.
bool AppendNumber(SqlBuffer& text, std::int32_t number);
bool AppendNumber(SqlBuffer& text, double number);

/// The six significant digits of a number that is written without an exponent, as an integer, and the decimal exponent
/// of the first of them.
struct SixDigits {
    std::uint32_t digits;
    int exponent;
};

/// Finds the digits without the standard library's conversion. Returns false for numbers from 999999.5 up and below 1,
/// and where rounding is too close to call. For AppendNumber() and its tests.
bool FindSixDigits(double magnitude, SixDigits& found);

/// The bytes that AppendNumber() appends in the classic locale: never too few, and at most a few too many.
std::size_t NumberSize(std::int32_t number);
std::size_t NumberSize(double number);

} // namespace Morvik::sql
