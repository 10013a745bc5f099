#include "fuzz/StoredRow.h"

#include <sql/DatabaseApi.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>
#include <variant>

#include "fuzz/Finding.h"
#include "support/Cells.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

// The table's columns. An update reads a text that equals one of them as that column.
const std::vector<std::string> Columns{"c0", "c1", "c2", "c3", "c4", "c5"};

const std::string MakeEmptyTable = "CREATE TABLE IF NOT EXISTS stored (c0, c1, c2, c3, c4, c5); DELETE FROM stored";

/// The table, emptied. It is kept open from one input to the next.
RawSqlite& RawTable()
{
    static RawSqlite sqlite(":memory:");
    sqlite.Execute(MakeEmptyTable);
    return sqlite;
}

/// The same table in a database of the facade.
DatabaseApi& FacadeTable()
{
    static DatabaseApi facade;
    if (!(facade.IsOpen() || facade.OpenDatabase(":memory:", false)) || !facade.Execute(MakeEmptyTable)) {
        ReportFinding("The table cannot be made: " + facade.GetLastErrorMsg());
    }
    return facade;
}

std::vector<DbTableRowValues> Rows(const DatabaseApi& facade)
{
    DbTableData data;
    if (!facade.ReadValues("SELECT rowid, * FROM stored", data)) {
        ReportFinding("The table cannot be read: " + facade.GetLastErrorMsg());
    }
    return data.rows;
}

DbTableRowValues OnlyRow(const DatabaseApi& facade)
{
    std::vector<DbTableRowValues> rows = Rows(facade);
    RequireSame("The number of rows", std::to_string(rows.size()), "1");
    return std::move(rows.front());
}

/// The index in OnlyRow() of the column that a double-quoted text names; -1 if it names no column.
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

// The text as RawSqlite::Rows() writes it.
std::string Quoted(const std::string& text)
{
    return "'" + Doubled(text) + "'";
}

// Reports a finding unless `stored`, a value as RawSqlite::Rows() writes it, is the value of the cell. `literal` is
// the cell's text in the statement.
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

void RequireStored(const std::vector<DbTableColumnValue>& cells, const std::vector<std::string>& literals)
{
    std::string names;
    std::string values;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        names += (i == 0 ? "" : ",") + Columns[i];
        values += (i == 0 ? "" : ",") + literals[i];
    }
    RawSqlite& sqlite = RawTable();
    sqlite.Execute("INSERT INTO stored (" + names + ") VALUES (" + values + ")");
    const auto rows = sqlite.Rows("SELECT " + names + " FROM stored");
    for (std::size_t i = 0; i < cells.size(); ++i) {
        RequireStoredAs(cells[i], literals[i], rows.at(0).at(i));
    }
}

void RequireWritten(const std::vector<DbTableColumnValue>& cells)
{
    DatabaseApi& facade = FacadeTable();
    const DbTableDataWrite data = Request(cells);
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

void RequireRejected(const std::vector<DbTableColumnValue>& cells)
{
    DatabaseApi& facade = FacadeTable();
    const bool written = facade.WriteTableValues("stored", Request(cells));
    RequireSame("The code of a text with a zero byte", std::to_string(facade.GetLastError()), "1");
    if (written || !Rows(facade).empty()) {
        ReportFinding("A text with a zero byte is written");
    }
}

} // namespace Morvik::sql::tests
