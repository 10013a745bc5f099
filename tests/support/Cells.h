#pragma once

#include <sql/DbTableData.h>
#include <sql/DbTableRowValues.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "support/Quoting.h"

namespace Morvik::sql::tests {

inline DbTableColumnValue IntegerCell(int value)
{
    return {DbTableColumnType::Integer, 0, value};
}

inline DbTableColumnValue RealCell(double value)
{
    return {DbTableColumnType::Real, 0, value};
}

inline DbTableColumnValue TextCell(std::string value)
{
    return {DbTableColumnType::Text, 0, std::move(value)};
}

inline DbTableColumnValue BlobCell(std::string_view bytes)
{
    return {DbTableColumnType::Blob, 0, std::vector<char>(bytes.begin(), bytes.end())};
}

/// A cell that has no SQL text.
inline DbTableColumnValue InvalidCell(std::uint32_t column = 0)
{
    return {DbTableColumnType::Null, column, 0};
}

/// A cell of which only the tag is written, such as the current time.
inline DbTableColumnValue TagCell(DbTableColumnType type)
{
    return {type, 0, 0};
}

inline std::string ValueText(const DbTableColumnValue& cell)
{
    if (const auto* number = std::get_if<int>(&cell.value)) {
        return "int(" + std::to_string(*number) + ")";
    }
    if (const auto* number = std::get_if<double>(&cell.value)) {
        std::array<char, 32> text{};
        return "double(" + std::string(text.data(), std::to_chars(text.begin(), text.end(), *number).ptr) + ")";
    }
    if (const auto* text = std::get_if<std::string>(&cell.value)) {
        return "string(" + *text + ")";
    }
    const auto& bytes = std::get<std::vector<char>>(cell.value);
    return "bytes(" + Hex({bytes.begin(), bytes.end()}) + ")";
}

/// A cell as "column:Tag alternative(value)": "0:Integer int(5)", "1:None string()", "2:Blob bytes(410042)".
inline std::string CellText(const DbTableColumnValue& cell)
{
    static constexpr std::array<std::string_view, 6> Tags{"None", "Integer", "Real", "Text", "Blob", "Null"};
    const auto tag = static_cast<std::size_t>(cell.type);
    return std::to_string(cell.column) + ":" + std::string(tag < Tags.size() ? Tags[tag] : "other") + " " +
           ValueText(cell);
}

inline std::vector<std::string> CellTexts(const DbTableRowValues& row)
{
    std::vector<std::string> cells(row.cells.size());
    std::ranges::transform(row.cells, cells.begin(), CellText);
    return cells;
}

inline std::vector<std::vector<std::string>> CellTexts(const DbTableData& data)
{
    std::vector<std::vector<std::string>> rows;
    for (const DbTableRowValues& row : data.rows) {
        rows.push_back(CellTexts(row));
    }
    return rows;
}

} // namespace Morvik::sql::tests
