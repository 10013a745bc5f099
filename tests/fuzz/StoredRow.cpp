#include "fuzz/StoredRow.h"

#include <sql/DatabaseApi.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <variant>

#include "fuzz/Finding.h"
#include "fuzz/StoredValue.h"
#include "support/Cells.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

// The table's columns. An update reads a text that equals one of them as that column.
const std::vector<std::string> Columns{"c0", "c1", "c2", "c3", "c4", "c5"};

const std::string CreateStored = "CREATE TABLE stored (c0, c1, c2, c3, c4, c5)";

/// The table, which is kept open from one input to the next and emptied.
RawSqlite& PlainTable()
{
    static const auto plain = [] {
        auto opened = std::make_unique<RawSqlite>(":memory:");
        opened->Execute(CreateStored);
        return opened;
    }();
    plain->Execute("DELETE FROM stored");
    return *plain;
}

/// The same table in a database of the facade.
DatabaseApi& FacadeTable()
{
    static DatabaseApi facade;
    const bool ready = facade.IsOpen() || (facade.OpenDatabase(":memory:", false) && facade.Execute(CreateStored));
    if (!ready || !facade.Execute("DELETE FROM stored")) {
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
    RawSqlite& plain = PlainTable();
    plain.Execute("INSERT INTO stored (" + names + ") VALUES (" + values + ")");
    const auto rows = plain.Rows("SELECT " + names + " FROM stored");
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
