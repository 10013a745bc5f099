// SQLite must read the literal of any value as one value with the cell's content: a text with its apostrophes doubled,
// a number as a default stream writes it. With a zero byte in a text, nothing is written.

#include <sql/DbTableColumnValue.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "fuzz/Finding.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/StoredRow.h"
#include "model/SqlBuffer.h"
#include "model/ValueLiteral.h"
#include "support/Cells.h"
#include "support/FuzzInput.h"
#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

namespace {

std::string WithoutZeroBytes(std::string text)
{
    std::erase(text, '\0');
    return text;
}

double ChosenReal(FuzzInput& choices)
{
    static constexpr std::array<double, 8> Divisors{1, 10, 100, 1000, 1e5, 1e7, 1e9, 1e12};
    const std::uint64_t upper = choices.Bits();
    if (choices.OneIn(2)) {
        return std::bit_cast<double>(upper << 32 | choices.Bits());
    }
    return static_cast<double>(static_cast<std::int32_t>(upper)) / Divisors[choices.Below(Divisors.size())];
}

DbTableColumnValue ChosenCell(FuzzInput& choices)
{
    switch (choices.Below(9)) {
    case 0:
        return IntegerCell(static_cast<std::int32_t>(choices.Bits()));
    case 1:
        return RealCell(ChosenReal(choices));
    case 2:
        return BlobCell(choices.Bytes(choices.Below(256)));
    case 3:
        return TagCell(static_cast<DbTableColumnType>(choices.Bits()));
    case 4:
        return {static_cast<DbTableColumnType>(choices.Below(12)), 0, WithoutZeroBytes(choices.Bytes(4))};
    case 5: // the rest of the input
        return TextCell(WithoutZeroBytes(choices.Bytes(std::string::npos)));
    case 6:
        return TextCell(choices.Bytes(choices.Below(256)));
    default:
        return TextCell(WithoutZeroBytes(choices.Bytes(choices.Below(256))));
    }
}

std::vector<DbTableColumnValue> ChosenCells(FuzzInput& choices)
{
    std::vector<DbTableColumnValue> cells;
    do {
        cells.push_back(ChosenCell(choices));
    } while (choices.Left() && cells.size() < MostStoredCells);
    return cells;
}

/// The cell's text as the library appends it to a statement with other text; nothing if the cell has no text.
std::optional<std::string> Literal(const DbTableColumnValue& cell)
{
    SqlBuffer statement(ColumnValueSize(cell));
    statement.Append("VALUES ('\"");
    const std::size_t begin = statement.Size();
    const bool written = ColumnValueAsString(cell, statement);
    const std::string sql = statement.Text();
    if (!written) {
        RequireSame("What a cell without a literal leaves", sql.substr(begin), "");
        return std::nullopt;
    }
    return sql.substr(begin);
}

// Bytes are written unchanged, so any of these bytes ends the value or the statement.
bool EndsItsLiteral(const DbTableColumnValue& cell)
{
    const auto* const bytes = std::get_if<std::vector<char>>(&cell.value);
    return cell.type == DbTableColumnType::Blob && bytes != nullptr &&
           std::ranges::any_of(*bytes, [](char byte) { return byte == '\0' || byte == '"'; });
}

// SQLite reads "inf" and "nan" as the names of columns.
bool IsNoNumber(const DbTableColumnValue& cell)
{
    const auto* const number = std::get_if<double>(&cell.value);
    return cell.type == DbTableColumnType::Real && number != nullptr && !std::isfinite(*number);
}

bool HoldsZeroByte(const DbTableColumnValue& cell)
{
    const auto* const text = std::get_if<std::string>(&cell.value);
    return cell.type == DbTableColumnType::Text && text != nullptr && text->find('\0') != std::string::npos;
}

void TryCells(const std::vector<DbTableColumnValue>& cells)
{
    std::vector<std::string> literals;
    bool oneValueEach = true;
    for (const DbTableColumnValue& cell : cells) {
        const std::optional<std::string> literal = Literal(cell);
        RequireSame("The literal", literal.value_or(""), ReferenceLiteral(cell));
        oneValueEach = oneValueEach && literal && !EndsItsLiteral(cell) && !IsNoNumber(cell);
        literals.push_back(literal.value_or(""));
    }
    if (!oneValueEach) {
        return;
    }
    if (std::ranges::any_of(cells, HoldsZeroByte)) {
        RequireRejected(cells);
    } else {
        RequireWritten(cells, literals);
    }
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Morvik::sql::tests::FuzzInput choices(std::span(data, size));
    Morvik::sql::tests::TryCells(Morvik::sql::tests::ChosenCells(choices));
    return 0;
}
