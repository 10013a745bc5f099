#include "model/NumberText.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <ios>
#include <locale>
#include <sstream>

namespace Morvik::sql {

namespace {

constexpr int StreamPrecision = 6;

// Enough for the longest number, "-1.23457e+308".
constexpr std::size_t LongestNumber = 16;

template <typename Number>
void AppendStreamed(std::string& text, Number number)
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
    Append(text, number);
}

void AppendNumber(std::string& text, double number)
{
    Append(text, number, std::chars_format::general, StreamPrecision);
}

} // namespace Morvik::sql
