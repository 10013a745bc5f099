// Any value in a statement is one value to SQLite, and the one that it stands for: a text with its apostrophes doubled,
// a number as a default stream writes it.

#include <sql/DatabaseApi.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Finding.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/StoredValue.h"
#include "model/StatementText.h"
#include "model/ValueLiteral.h"
#include "support/Cells.h"
#include "support/Choices.h"
#include "support/PlainRendering.h"
#include "support/PlainSqlite.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t MostCells = 6;

// The table's columns. An update reads a text that equals one of them as that column.
const std::vector<std::string> Columns{"c0", "c1", "c2", "c3", "c4", "c5"};

std::string WithoutZeroBytes(std::string text)
{
    std::erase(text, '\0');
    return text;
}

double ChosenReal(Choices& choices)
{
    static constexpr std::array<double, 8> Divisors{1, 10, 100, 1000, 1e5, 1e7, 1e9, 1e12};
    const std::uint64_t upper = choices.Bits();
    if (choices.OneIn(2)) {
        return std::bit_cast<double>(upper << 32 | choices.Bits());
    }
    return static_cast<double>(static_cast<std::int32_t>(upper)) / Divisors[choices.Below(Divisors.size())];
}

DbTableColumnValue ChosenCell(Choices& choices)
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
    default:
        return TextCell(WithoutZeroBytes(choices.Bytes(choices.Below(256))));
    }
}

std::vector<DbTableColumnValue> ChosenCells(Choices& choices)
{
    std::vector<DbTableColumnValue> cells;
    do {
        cells.push_back(ChosenCell(choices));
    } while (choices.Left() && cells.size() < MostCells);
    return cells;
}

/// The cell's text as the library writes it, between other texts; nothing when it has none.
std::optional<std::string> Literal(const DbTableColumnValue& cell)
{
    StatementText statement(ColumnValueSize(cell));
    statement += "VALUES ('\"";
    const std::size_t begin = statement.Size();
    const bool written = ColumnValueAsString(cell, statement);
    const std::string sql = statement.Take();
    if (!written) {
        RequireSame("What a cell without a literal leaves", sql.substr(begin), "");
        return std::nullopt;
    }
    return sql.substr(begin);
}

// Bytes are written as they are: one of these ends the value or the statement.
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

/// Empties the table, which stays open from one input to the next.
PlainSqlite& PlainTable()
{
    static PlainSqlite plain(":memory:");
    static const bool made = (plain.Execute("CREATE TABLE stored (c0, c1, c2, c3, c4, c5)"), true);
    static_cast<void>(made);
    plain.Execute("DELETE FROM stored");
    return plain;
}

DatabaseApi& FacadeTable()
{
    static DatabaseApi facade;
    static const bool made =
        facade.OpenDatabase(":memory:", false) && facade.Execute("CREATE TABLE stored (c0, c1, c2, c3, c4, c5)");
    if (!made || !facade.Execute("DELETE FROM stored")) {
        ReportFinding("The table cannot be made: " + facade.GetLastErrorMsg());
    }
    return facade;
}

void RequireStored(const std::vector<DbTableColumnValue>& cells, const std::vector<std::string>& literals)
{
    std::string names;
    std::string values;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        names += (i == 0 ? "" : ",") + Columns[i];
        values += (i == 0 ? "" : ",") + literals[i];
    }
    PlainSqlite& plain = PlainTable();
    plain.Execute("INSERT INTO stored (" + names + ") VALUES (" + values + ")");
    const auto rows = plain.Rows("SELECT " + names + " FROM stored");
    for (std::size_t i = 0; i < cells.size(); ++i) {
        RequireStoredAs(cells[i], literals[i], rows.at(0).at(i));
    }
}

DbTableRowValues OnlyRow(const DatabaseApi& facade)
{
    DbTableData data;
    if (!facade.ReadValues("SELECT rowid, * FROM stored", data) || data.rows.size() != 1) {
        ReportFinding("There is no single row: " + facade.GetLastErrorMsg());
    }
    return data.rows.front();
}

/// The place in OnlyRow() of the column that a double-quoted text names; -1 when it names none.
int NamedColumn(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    const auto column = std::ranges::find(Columns, text);
    if (column != Columns.end()) {
        return static_cast<int>(column - Columns.begin()) + 1;
    }
    return text == "rowid" || text == "oid" || text == "_rowid_" ? 0 : -1;
}

void RequireWritten(const std::vector<DbTableColumnValue>& cells)
{
    DatabaseApi& facade = FacadeTable();
    DbTableDataWrite data;
    data.columns.assign(Columns.begin(), Columns.begin() + static_cast<std::ptrdiff_t>(cells.size()));
    data.rows.push_back({cells});
    if (!facade.WriteTableValues("stored", data)) {
        ReportFinding("WriteTableValues left " + facade.GetLastErrorMsg());
    }
    const DbTableRowValues written = OnlyRow(facade);
    if (!facade.UpdateTableValues("stored", data, "")) {
        ReportFinding("UpdateTableValues left " + facade.GetLastErrorMsg());
    }
    const DbTableRowValues updated = OnlyRow(facade);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const auto* const text = std::get_if<std::string>(&cells[i].value);
        if (text != nullptr && cells[i].type == DbTableColumnType::Text) {
            const std::string expected = ValueText(TextCell(Doubled(*text)));
            const int named = NamedColumn(*text);
            RequireSame("The written text", ValueText(written.cells.at(i + 1)), expected);
            RequireSame("The updated text", ValueText(updated.cells.at(i + 1)),
                        named < 0 ? expected : ValueText(written.cells.at(static_cast<std::size_t>(named))));
        }
    }
}

void TryCells(const std::vector<DbTableColumnValue>& cells)
{
    std::vector<std::string> literals;
    bool oneValueEach = true;
    for (const DbTableColumnValue& cell : cells) {
        const std::optional<std::string> literal = Literal(cell);
        RequireSame("The literal", literal.value_or(""), PlainLiteral(cell));
        oneValueEach = oneValueEach && literal && !EndsItsLiteral(cell) && !IsNoNumber(cell);
        literals.push_back(literal.value_or(""));
    }
    if (oneValueEach) {
        RequireStored(cells, literals);
        RequireWritten(cells);
    }
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Morvik::sql::tests::Choices choices(std::span(data, size));
    Morvik::sql::tests::TryCells(Morvik::sql::tests::ChosenCells(choices));
    return 0;
}
