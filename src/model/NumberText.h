#pragma once

#include <cstddef>
#include <cstdint>

namespace Morvik::sql {

class SqlBuffer;

/// Appends the number as a new default stream writes it with the process-wide C++ locale, including its digit groups
/// and its decimal comma. Returns whether any text was written: a facet of the application's locale may write none, or
/// throw. Throws std::bad_alloc instead of writing an incomplete number.
bool AppendNumber(SqlBuffer& text, std::int32_t number);
bool AppendNumber(SqlBuffer& text, double number);

/// The six significant digits, as an integer, of a number that is written without an exponent, and the decimal exponent
/// of its first digit.
struct SixDigits {
    std::uint32_t digits;
    int exponent;
};

/// Finds the digits without the standard library's conversion. Returns false for numbers from 999999.5 up, for numbers
/// below 1, and for numbers whose rounding is uncertain. Used by AppendNumber() and by its tests.
bool FindSixDigits(double magnitude, SixDigits& found);

/// The expected number of bytes that AppendNumber() appends: in the classic locale never too small, and at most a few
/// bytes too large.
std::size_t NumberSize(std::int32_t number);
std::size_t NumberSize(double number);

} // namespace Morvik::sql
