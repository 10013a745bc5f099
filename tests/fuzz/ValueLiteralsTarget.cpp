// SQLite must read the literal of any value as one value with the cell's content: a text with its apostrophes doubled,
// a number as a default stream writes it. With a zero byte in a text, nothing is written.

#include <sql/DatabaseApi.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "model/SqlBuffer.h"
#include "model/ValueLiteral.h"
#include "support/Cells.h"
#include "support/FuzzInput.h"
#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

namespace {

const std::vector<std::string> Columns{"c0", "c1", "c2", "c3", "c4", "c5"};

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
    } while (choices.Left() && cells.size() < Columns.size());
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

/// A facade with the table, emptied. It is kept open from one input to the next.
DatabaseApi& FacadeTable()
{
    static DatabaseApi facade;
    if (!(facade.IsOpen() || facade.OpenDatabase(":memory:", false)) ||
        !facade.Execute("CREATE TABLE IF NOT EXISTS stored (c0, c1, c2, c3, c4, c5); DELETE FROM stored")) {
        ReportFinding("The table cannot be made: " + facade.GetLastErrorMsg());
    }
    return facade;
}

void RequireSameNumber(const std::string& stored, const std::string& literal)
{
    const double actual = std::strtod(stored.c_str(), nullptr);
    const double expected = std::strtod(literal.c_str(), nullptr);
    // SQLite prints 15 digits, and parses the smallest numbers with fewer.
    const bool same = std::abs(actual - expected) <= std::max(std::abs(expected) * 1e-14, 1e-290);
    if (!same || stored.front() == '\'') {
        ReportFinding("The number " + literal + " is stored as " + stored);
    }
}

// The text with its apostrophes doubled, as the library stores it.
std::string Doubled(const std::string& text)
{
    std::string doubled;
    for (const char c : text) {
        doubled.append(c == '\'' ? 2 : 1, c);
    }
    return doubled;
}

// Reports a finding unless `stored`, a value as SQLite's quote() writes it, is the value of the cell. `literal` is the
// cell's text in the statement.
void RequireStoredAs(const DbTableColumnValue& cell, const std::string& literal, const std::string& stored)
{
    if (const auto* const text = std::get_if<std::string>(&cell.value); literal.front() == '"' && text != nullptr) {
        RequireSame("The stored text of " + Printable(*text), stored, "'" + Doubled(Doubled(*text)) + "'");
    } else if (literal.front() == '"') {
        const auto& bytes = std::get<std::vector<char>>(cell.value);
        RequireSame("The stored bytes", stored, "'" + Doubled({bytes.begin(), bytes.end()}) + "'");
    } else if (cell.type > DbTableColumnType::Null) {
        const bool isText = cell.type != DbTableColumnType::JulianDayNow;
        RequireSame("The time's first character", stored.substr(0, 1), isText ? "'" : "2");
    } else {
        RequireSameNumber(stored, literal);
    }
}

DbTableDataWrite Request(const std::vector<DbTableColumnValue>& cells)
{
    return {{Columns.begin(), Columns.begin() + static_cast<std::ptrdiff_t>(cells.size())}, {{cells}}};
}

/// Reports a finding unless the facade inserts the cells, whose texts in the statement are `literals`, and SQLite
/// stores the value of each cell. An update with the same cells must succeed.
void RequireWritten(const std::vector<DbTableColumnValue>& cells, const std::vector<std::string>& literals)
{
    DatabaseApi& facade = FacadeTable();
    if (!facade.WriteTableValues("stored", Request(cells))) {
        ReportFinding("WriteTableValues left " + facade.GetLastErrorMsg());
    }
    DbTableData data;
    if (!facade.ReadValues("SELECT quote(c0), quote(c1), quote(c2), quote(c3), quote(c4), quote(c5) FROM stored",
                           data) ||
        data.rows.size() != 1) {
        ReportFinding("The row cannot be read: " + facade.GetLastErrorMsg());
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
        RequireStoredAs(cells[i], literals[i], std::get<std::string>(data.rows[0].cells.at(i).value));
    }
    if (!facade.UpdateTableValues("stored", Request(cells), "")) {
        ReportFinding("UpdateTableValues left " + facade.GetLastErrorMsg());
    }
}

/// Reports a finding unless SQLite rejects the row and nothing is written: the zero byte ends the statement inside its
/// text.
void RequireRejected(const std::vector<DbTableColumnValue>& cells)
{
    DatabaseApi& facade = FacadeTable();
    const bool written = facade.WriteTableValues("stored", Request(cells));
    RequireSame("The code of a text with a zero byte", std::to_string(facade.GetLastError()), "1");
    int result = -1;
    if (written || facade.ExistData("stored", "", result) != 0 || result != 0) {
        ReportFinding("A text with a zero byte is written");
    }
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
