#include "fuzz/StoredRow.h"

#include <sql/DatabaseApi.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <variant>

#include "fuzz/Finding.h"
#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

// The table's columns. An update reads a text that equals one of them as that column.
const std::vector<std::string> Columns{"c0", "c1", "c2", "c3", "c4", "c5"};

const std::string MakeEmptyTable = "CREATE TABLE IF NOT EXISTS stored (c0, c1, c2, c3, c4, c5); DELETE FROM stored";

/// A facade with the table, emptied. It is kept open from one input to the next.
DatabaseApi& FacadeTable()
{
    static DatabaseApi facade;
    if (!(facade.IsOpen() || facade.OpenDatabase(":memory:", false)) || !facade.Execute(MakeEmptyTable)) {
        ReportFinding("The table cannot be made: " + facade.GetLastErrorMsg());
    }
    return facade;
}

std::vector<DbTableRowValues> Rows(const DatabaseApi& facade, const std::string& columns)
{
    DbTableData data;
    if (!facade.ReadValues("SELECT " + columns + " FROM stored", data)) {
        ReportFinding("The table cannot be read: " + facade.GetLastErrorMsg());
    }
    return data.rows;
}

/// The cells of the only row, each as a text.
std::vector<std::string> OnlyRow(const DatabaseApi& facade, const std::string& columns)
{
    const std::vector<DbTableRowValues> rows = Rows(facade, columns);
    RequireSame("The number of rows", std::to_string(rows.size()), "1");
    std::vector<std::string> cells;
    std::ranges::transform(rows.front().cells, std::back_inserter(cells), ValueText);
    return cells;
}

/// The index in "rowid, *" of the column that a double-quoted text names; -1 if it names no column.
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

// The text as SQLite's quote() writes it.
std::string Quoted(const std::string& text)
{
    return "'" + Doubled(text) + "'";
}

// Reports a finding unless `stored`, a value as SQLite's quote() writes it, is the value of the cell. `literal` is the
// cell's text in the statement.
void RequireStoredAs(const DbTableColumnValue& cell, const std::string& literal, const std::string& stored)
{
    if (literal.front() != '"') {
        const bool isTime = cell.type > DbTableColumnType::Null;
        const bool isText = cell.type != DbTableColumnType::JulianDayNow;
        isTime ? RequireSame("The time's first character", stored.substr(0, 1), isText ? "'" : "2")
               : RequireSameNumber(stored, literal);
    } else if (const auto* const text = std::get_if<std::string>(&cell.value)) {
        RequireSame("The stored text of " + Printable(*text), stored, Quoted(Doubled(*text)));
    } else {
        const auto& bytes = std::get<std::vector<char>>(cell.value);
        RequireSame("The stored bytes", stored, Quoted(std::string(bytes.begin(), bytes.end())));
    }
}

DbTableDataWrite Request(const std::vector<DbTableColumnValue>& cells)
{
    DbTableDataWrite data;
    data.columns.assign(Columns.begin(), Columns.begin() + static_cast<std::ptrdiff_t>(cells.size()));
    data.rows.push_back({cells});
    return data;
}

} // namespace

void RequireWritten(const std::vector<DbTableColumnValue>& cells, const std::vector<std::string>& literals)
{
    DatabaseApi& facade = FacadeTable();
    const DbTableDataWrite data = Request(cells);
    if (!facade.WriteTableValues("stored", data)) {
        ReportFinding("WriteTableValues left " + facade.GetLastErrorMsg());
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const auto rows = Rows(facade, "quote(" + Columns[i] + ")");
        RequireStoredAs(cells[i], literals[i], std::get<std::string>(rows.at(0).cells.at(0).value));
    }
    const std::vector<std::string> written = OnlyRow(facade, "rowid, *");
    if (!facade.UpdateTableValues("stored", data, "")) {
        ReportFinding("UpdateTableValues left " + facade.GetLastErrorMsg());
    }
    const std::vector<std::string> updated = OnlyRow(facade, "rowid, *");
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const auto* const text = std::get_if<std::string>(&cells[i].value);
        if (text != nullptr && cells[i].type == DbTableColumnType::Text) {
            const int named = NamedColumn(*text);
            RequireSame("The updated text", updated.at(i + 1),
                        written.at(named < 0 ? i + 1 : static_cast<std::size_t>(named)));
        }
    }
}

void RequireRejected(const std::vector<DbTableColumnValue>& cells)
{
    DatabaseApi& facade = FacadeTable();
    const bool written = facade.WriteTableValues("stored", Request(cells));
    RequireSame("The code of a text with a zero byte", std::to_string(facade.GetLastError()), "1");
    if (written || !Rows(facade, "*").empty()) {
        ReportFinding("A text with a zero byte is written");
    }
}

} // namespace Morvik::sql::tests
