// SQLite must read the literal of any value as one value with the cell's content: a text with its apostrophes doubled,
// a number as a default stream writes it. With a zero byte in a text, nothing is written.

#include <sql/DatabaseApi.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "model/SqlBuffer.h"
#include "model/ValueLiteral.h"
#include "support/Cells.h"
#include "support/FuzzInput.h"
#include "support/Quoting.h"
#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;

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

// Whether SQLite reads the cell's literal as one value. It reads "inf" and "nan" as the names of columns. The bytes of
// a blob are written unchanged, so a zero byte or a quotation mark ends the statement or the value.
bool IsOneValue(const DbTableColumnValue& cell, std::string_view literal)
{
    switch (cell.type) {
    case DbTableColumnType::Real:
        return literal.find('n') == std::string_view::npos;
    case DbTableColumnType::Blob:
        return literal.find_first_of("\"\0"sv, 1) == literal.size() - 1;
    default:
        return true;
    }
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

// Reports a finding unless `stored` is the value of the cell. `literal` is the cell's text in the statement.
void RequireStoredAs(const DbTableColumnValue& cell, const std::string& literal, const DbTableColumnValue& stored)
{
    const std::string actual = ValueText(stored);
    if (const auto* const text = std::get_if<std::string>(&cell.value); literal.front() == '"' && text != nullptr) {
        RequireSame("The stored text", actual, ValueText(TextCell(Doubled(*text, '\''))));
    } else if (literal.front() == '"') {
        const auto& bytes = std::get<std::vector<char>>(cell.value);
        RequireSame("The stored bytes", actual, ValueText(TextCell({bytes.begin(), bytes.end()})));
    } else if (cell.type > DbTableColumnType::Null) {
        const std::string beginning = cell.type == DbTableColumnType::JulianDayNow ? "double(2" : "string(";
        RequireSame("The beginning of the time", actual.substr(0, beginning.size()), beginning);
    } else {
        const auto* const integer = std::get_if<int>(&stored.value);
        const double number = integer != nullptr ? *integer : std::get<double>(stored.value);
        const double expected = std::strtod(literal.c_str(), nullptr);
        // SQLite parses the smallest numbers less exactly.
        if (std::abs(number - expected) > std::max(std::abs(expected) * 1e-14, 1e-290)) {
            ReportFinding("The number " + literal + " is stored as " + actual);
        }
    }
}

/// Reports a finding unless the facade inserts the row, whose texts in the statement are `literals`, and SQLite stores
/// the value of each cell. An update with the same cells must succeed.
void RequireWritten(const DbTableDataWrite& row, const std::vector<std::string>& literals)
{
    DatabaseApi& facade = FacadeTable();
    DbTableData data;
    if (!facade.WriteTableValues("stored", row) || !facade.ReadTableValues("stored", data) || data.rows.size() != 1) {
        ReportFinding("The row cannot be written and read: " + facade.GetLastErrorMsg());
    }
    for (std::size_t i = 0; i < literals.size(); ++i) {
        RequireStoredAs(row.rows[0].cells[i], literals[i], data.rows[0].cells.at(i));
    }
    if (!facade.UpdateTableValues("stored", row, "")) {
        ReportFinding("UpdateTableValues left " + facade.GetLastErrorMsg());
    }
}

/// Reports a finding unless SQLite rejects the row and nothing is written: the zero byte ends the statement inside a
/// literal.
void RequireRejected(const DbTableDataWrite& row)
{
    DatabaseApi& facade = FacadeTable();
    const bool written = facade.WriteTableValues("stored", row);
    RequireSame("The code of a text with a zero byte", std::to_string(facade.GetLastError()), "1");
    int result = -1;
    if (written || facade.ExistData("stored", "", result) != 0 || result != 0) {
        ReportFinding("A text with a zero byte is written");
    }
}

void TryRow(FuzzInput& choices)
{
    DbTableDataWrite row{{"c0", "c1", "c2", "c3", "c4", "c5"}, {{}}};
    std::vector<std::string> literals;
    bool oneValueEach = true;
    for (std::size_t i = 0; i < row.columns.size(); ++i) {
        const DbTableColumnValue& cell = row.rows[0].cells.emplace_back(ChosenCell(choices));
        const std::optional<std::string> literal = Literal(cell);
        RequireSame("The literal", literal.value_or(""), ReferenceLiteral(cell));
        oneValueEach = oneValueEach && literal && IsOneValue(cell, *literal);
        literals.push_back(literal.value_or(""));
    }
    if (!oneValueEach) {
        return;
    }
    if (std::ranges::any_of(literals, [](const std::string& text) { return text.find('\0') != std::string::npos; })) {
        RequireRejected(row);
    } else {
        RequireWritten(row, literals);
    }
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Morvik::sql::tests::FuzzInput choices(std::span(data, size));
    Morvik::sql::tests::TryRow(choices);
    return 0;
}
