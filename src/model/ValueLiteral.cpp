#include "model/ValueLiteral.h"

#include <algorithm>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include <boost/algorithm/string/replace.hpp>

#include "model/NumberText.h"
#include "model/SqlBuffer.h"

namespace Morvik::sql {

namespace {

template <typename Alternative>
const Alternative* ValueOf(const DbTableColumnValue& cell)
{
    return std::get_if<Alternative>(&cell.value);
}

// The SQL function call that computes the value when the statement runs; empty for tags whose cells carry a value.
std::string_view TimeFunction(DbTableColumnType type)
{
    switch (type) {
    case DbTableColumnType::DateTimeNow:
        return "datetime('now')";
    case DbTableColumnType::DateTimeNowLocalTime:
        return "datetime('now','localtime')";
    case DbTableColumnType::UnixTimeNow:
        return "strftime('%s', 'now')";
    case DbTableColumnType::JulianDayNow:
        return "julianday('now')";
    default:
        return {};
    }
}

template <typename Number>
bool AppendNumberOf(SqlBuffer& sql, const DbTableColumnValue& cell)
{
    const auto* const number = ValueOf<Number>(cell);
    return number != nullptr && AppendNumber(sql, *number);
}

// Texts and bytes are written between double quotation marks, not apostrophes. Applications rely on the effects:
// O'Brien is stored as O''Brien, and an update reads a text that equals a column's name as that column.
[[gnu::always_inline]] inline bool AppendQuoted(SqlBuffer& sql, std::string_view bytes)
{
    char* end = sql.Reserve(bytes.size() + 2);
    *end++ = '"';
    end += bytes.copy(end, bytes.size());
    *end++ = '"';
    sql.SetEnd(end);
    return true;
}

bool Holds(const std::string& text, char quote)
{
    return std::char_traits<char>::find(text.data(), text.size(), quote) != nullptr;
}

[[gnu::cold, gnu::noinline]] bool AppendDoubled(SqlBuffer& sql, const std::string& text)
{
    std::string doubled;
    try {
        doubled = boost::algorithm::replace_all_copy(text, "'", "''");
        doubled = boost::algorithm::replace_all_copy(doubled, "\"", "\"\"");
    } catch (const std::exception&) {
        return false; // out of memory while doubling the quotes: the cell is treated as invalid
    }
    return AppendQuoted(sql, doubled);
}

bool AppendText(SqlBuffer& sql, const std::string& text)
{
    return Holds(text, '\'') || Holds(text, '"') ? AppendDoubled(sql, text) : AppendQuoted(sql, text);
}

} // namespace

bool ColumnValueAsString(const DbTableColumnValue& cell, SqlBuffer& sql)
{
    switch (cell.type) {
    case DbTableColumnType::None:
    case DbTableColumnType::Integer:
        return AppendNumberOf<int>(sql, cell);
    case DbTableColumnType::Real:
        return AppendNumberOf<double>(sql, cell);
    case DbTableColumnType::Text: {
        const auto* const text = ValueOf<std::string>(cell);
        return text != nullptr && AppendText(sql, *text);
    }
    case DbTableColumnType::Blob: {
        const auto* const bytes = ValueOf<std::vector<char>>(cell);
        return bytes != nullptr && AppendQuoted(sql, {bytes->data(), bytes->size()});
    }
    default: {
        const std::string_view function = TimeFunction(cell.type);
        if (function.empty()) {
            return false;
        }
        sql.Append(function);
        return true;
    }
    }
}

std::size_t ColumnValueSize(const DbTableColumnValue& cell)
{
    constexpr std::size_t QuotationMarks = 2;
    constexpr std::size_t BytesPerQuote = 64; // assume one quote per 64 bytes
    if (const auto* text = ValueOf<std::string>(cell)) {
        return text->size() + text->size() / BytesPerQuote + QuotationMarks;
    }
    if (const auto* bytes = ValueOf<std::vector<char>>(cell)) {
        return bytes->size() + QuotationMarks;
    }
    if (const auto* number = ValueOf<double>(cell)) {
        return NumberSize(*number);
    }
    // A cell with a time function usually holds the int that the cell was created with.
    const auto* const number = ValueOf<int>(cell);
    const std::size_t size = number != nullptr ? NumberSize(*number) : 0;
    return cell.type < DbTableColumnType::DateTimeNow ? size : std::max(TimeFunction(cell.type).size(), size);
}

const DbTableColumnValue* AppendRowLiterals(SqlBuffer& sql, const DbTableRowValues& row)
{
    const std::span cells(row.cells);
    for (const DbTableColumnValue& cell : cells) {
        if (&cell != cells.data()) {
            sql.Append(',');
        }
        if (!ColumnValueAsString(cell, sql)) {
            return &cell;
        }
    }
    return nullptr;
}

std::size_t RowLiteralsSize(const DbTableRowValues& row)
{
    std::size_t size = 0;
    for (const DbTableColumnValue& cell : row.cells) {
        size += ColumnValueSize(cell) + 1;
    }
    return size;
}

} // namespace Morvik::sql
