#include "common/TextTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <system_error>
#include <utility>

namespace examples {

namespace {

bool StartsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

std::size_t CharacterCount(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(text, StartsCharacter));
}

void AppendCell(std::string& line, const std::string& cell, std::size_t width, Align align)
{
    const std::string padding(width - CharacterCount(cell), ' ');
    line += "  ";
    line += align == Align::Right ? padding + cell : cell + padding;
}

} // namespace

TextTable::TextTable(std::vector<Column> columns) : m_columns(std::move(columns))
{
    std::vector<std::string> titles;
    for (const Column& column : m_columns) {
        titles.push_back(column.title);
    }
    m_rows.push_back(std::move(titles));
}

void TextTable::AddRow(std::vector<std::string> cells)
{
    cells.resize(m_columns.size());
    m_rows.push_back(std::move(cells));
}

void TextTable::Print(std::ostream& out) const
{
    std::vector<std::size_t> widths(m_columns.size());
    for (const std::vector<std::string>& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], CharacterCount(row[i]));
        }
    }
    for (const std::vector<std::string>& row : m_rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            AppendCell(line, row[i], widths[i], m_columns[i].align);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

std::string Bar(double value, double largest, int width)
{
    if (value <= 0 || largest <= 0) {
        return {};
    }
    const double length = std::ceil(std::min(value / largest, 1.0) * width);
    return std::string(static_cast<std::size_t>(length), '#');
}

std::string Fixed(double number, int decimals)
{
    std::array<char, 512> text{}; // room for the largest number, which has 309 digits
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(text.data(), end) : std::string("?");
}

std::string Shown(double number, int decimals)
{
    std::string text = Fixed(number, decimals);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
    }
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

std::string Shortened(std::string_view text, std::size_t width)
{
    static constexpr std::string_view Mark = "...";
    text = text.substr(0, text.find('\n'));
    if (CharacterCount(text) <= width) {
        return Printable(text);
    }
    std::size_t end = 0;
    for (std::size_t characters = 0; end < text.size(); ++end) {
        if (StartsCharacter(text[end]) && ++characters > width - Mark.size()) {
            break;
        }
    }
    return Printable(text.substr(0, end)) + std::string(Mark);
}

std::string Printable(std::string_view text)
{
    std::string printable(text);
    std::ranges::replace_if(
        printable, [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }, ' ');
    return printable;
}

} // namespace examples
