#include "model/NumberText.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <ios>
#include <locale>
#include <sstream>

namespace Morvik::sql {

namespace {

constexpr int StreamPrecision = 6;

// The size of "-1.23457e+308" and one to spare.
constexpr std::size_t LongestNumber = 14;

template <typename Number>
[[gnu::cold, gnu::noinline]] void AppendStreamed(std::string& text, Number number)
{
    std::ostringstream stream;
    // Otherwise the stream would swallow a failed allocation and go on with a number cut short.
    stream.exceptions(std::ios_base::badbit);
    stream << number;
    text += stream.view();
}

// The classic locale writes what std::to_chars writes, at a fraction of the cost of a stream.
template <typename Number, typename... Format>
void Append(std::string& text, Number number, Format... format)
{
    if (std::locale() != std::locale::classic()) {
        AppendStreamed(text, number);
        return;
    }
    std::array<char, LongestNumber> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, format...).ptr;
    text.append(buffer.data(), end);
}

} // namespace

void AppendNumber(std::string& text, std::int32_t number)
{
    Append(text, number);
}

void AppendNumber(std::string& text, std::uint32_t number)
{
    AppendStreamed(text, number); // stands in a message only
}

void AppendNumber(std::string& text, double number)
{
    Append(text, number, std::chars_format::general, StreamPrecision);
}

std::size_t NumberSize(std::int32_t number)
{
    // 1233 / 4096 is a little more than log10(2), so that this counts the digits or one more.
    const auto magnitude = static_cast<std::uint32_t>(std::abs(std::int64_t{number}));
    return static_cast<std::size_t>(std::bit_width(magnitude) * 1233 / 4096 + 1 + (number < 0 ? 1 : 0));
}

std::size_t NumberSize(double number)
{
    // Six digits and a point, behind "0." for the smallest of these; every other number may take an exponent.
    const double magnitude = std::abs(number);
    return magnitude >= 0.1 && magnitude < 1e6 ? std::size_t{9} : LongestNumber;
}

} // namespace Morvik::sql
