#include "model/NumberText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <ostream>

#include "model/SqlBuffer.h"
#include "model/StreamText.h"

namespace Morvik::sql {

namespace {

// The number of significant digits that a default stream writes for a double.
constexpr int Precision = 6;

// Enough for "-1.23457e+308" and "-2147483648".
constexpr std::size_t LongestNumber = 13;

// One stream writes every type of number: the code of a second stream would be larger than the rest of this file.
template <typename Number>
[[gnu::cold, gnu::noinline]] bool AppendStreamed(SqlBuffer& text, Number number)
{
    const StreamInsertion insert = [](std::ostream& stream, const void* value) {
        stream << *static_cast<const Number*>(value);
    };
    return AppendStreamed(text, insert, &number);
}

[[gnu::noinline]] char* WriteDigits(char* end, std::uint32_t number)
{
    return std::to_chars(end, end + LongestNumber, number).ptr;
}

// Writes the digits one place to the right, then moves the digits before the point to the left.
char* WriteSixDigits(char* begin, SixDigits number)
{
    char* end = WriteDigits(begin + 1, number.digits);
    char* const point = std::copy_n(begin + 1, number.exponent + 1, begin);
    *point = '.';
    while (end[-1] == '0') {
        --end;
    }
    return end[-1] == '.' ? end - 1 : end;
}

} // namespace

// Scales the number so that its six digits are before the point. Scaling rounds once, by far less than the margin, so
// the digits are right unless the rest is close to one half. In that case the function returns false.
bool FindSixDigits(double magnitude, SixDigits& found)
{
    static constexpr std::array PowersOfTen{1e0, 1e1, 1e2, 1e3, 1e4, 1e5};
    constexpr double Margin = 1e-9;
    if (!(magnitude >= 1.0 && magnitude < 999999.5)) {
        return false;
    }
    int exponent = 0;
    while (exponent + 1 < Precision && magnitude >= PowersOfTen[static_cast<std::size_t>(exponent) + 1]) {
        ++exponent;
    }
    const double scaled = magnitude * PowersOfTen[static_cast<std::size_t>(Precision - 1 - exponent)];
    const auto whole = static_cast<std::uint32_t>(scaled);
    const double rest = scaled - whole;
    if (std::abs(rest - 0.5) < Margin) {
        return false;
    }
    found.digits = whole + (rest > 0.5 ? 1 : 0);
    found.exponent = exponent;
    return found.digits < 1000000; // rounding up reached the next power of ten
}

bool AppendNumber(SqlBuffer& text, std::int32_t number)
{
    if (!text.HasPlainNumbers()) {
        return AppendStreamed(text, number);
    }
    char* end = text.Reserve(LongestNumber);
    auto magnitude = static_cast<std::uint32_t>(number);
    if (number < 0) {
        *end++ = '-';
        magnitude = 0 - magnitude;
    }
    text.SetEnd(WriteDigits(end, magnitude));
    return true;
}

bool AppendNumber(SqlBuffer& text, double number)
{
    if (!text.HasPlainNumbers()) {
        return AppendStreamed(text, number);
    }
    char* end = text.Reserve(LongestNumber);
    SixDigits found{};
    if (!FindSixDigits(std::abs(number), found)) {
        text.SetEnd(std::to_chars(end, end + LongestNumber, number, std::chars_format::general, Precision).ptr);
        return true;
    }
    if (std::signbit(number)) {
        *end++ = '-';
    }
    text.SetEnd(WriteSixDigits(end, found));
    return true;
}

std::size_t NumberSize(std::int32_t number)
{
    // 1233 / 4096 is log10(2), rounded down. For 32 bits the result is the number of digits or one more.
    const auto magnitude = static_cast<std::uint32_t>(std::abs(std::int64_t{number}));
    return static_cast<std::size_t>(std::bit_width(magnitude) * 1233 / 4096 + 1 + (number < 0 ? 1 : 0));
}

std::size_t NumberSize(double number)
{
    // From 0.1 to 1e6, no text is longer than "0." and six digits. Other texts may have an exponent or more zeroes.
    const double magnitude = std::abs(number);
    return magnitude >= 0.1 && magnitude < 1e6 ? std::size_t{8} + (number < 0 ? 1 : 0) : LongestNumber;
}

} // namespace Morvik::sql
