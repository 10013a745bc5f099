// Opens, reads, walks, counts and writes a file with any content. This must do no harm, and every result must be that
// of raw SQLite on a copy of the file.

#include <algorithm>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "fuzz/DamagedFile.h"
#include "fuzz/FuzzTarget.h"
#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t MostTables = 5;
constexpr std::size_t LongText = 700; // a row that does not fit on a page of 512 bytes

std::string Identifier(const std::string& name)
{
    std::string identifier = "\"";
    for (const char c : name) {
        identifier.append(c == '"' ? 2 : 1, c);
    }
    return identifier + '"';
}

// The texts in a column of the rows; a damaged file may have other types in that column.
std::vector<std::string> Texts(const DbTableData& data, std::size_t column)
{
    std::vector<std::string> texts;
    for (const DbTableRowValues& row : data.rows) {
        const auto* const text =
            column < row.cells.size() ? std::get_if<std::string>(&row.cells[column].value) : nullptr;
        if (text != nullptr && !text->empty()) {
            texts.push_back(*text);
        }
    }
    return texts;
}

std::vector<std::string> NamesOfTables(DamagedFile& file)
{
    std::vector<std::string> names =
        Texts(file.Read("SELECT name FROM sqlite_master WHERE type IN ('table', 'view')"), 0);
    names.resize(std::min(names.size(), MostTables));
    return names;
}

void ReadAll(DamagedFile& file)
{
    for (const std::string& name : NamesOfTables(file)) {
        const std::string table = Identifier(name);
        file.Exists(name);
        file.ReadTable(table);
        file.Read("SELECT * FROM " + table + " ORDER BY 2 DESC");
        file.Walk("SELECT rowid, * FROM " + table + " WHERE rowid > 1");
        // A count without a condition has no step at which it could be stopped if the pages form a circle.
        file.Count(name, "WHERE 1");
        file.Count(name, "WHERE key = 'b' OR key > 3");
    }
}

DbTableDataWrite NewRows(const std::vector<std::string>& columns)
{
    DbTableDataWrite data;
    data.columns = columns;
    for (int row = 0; row < 2; ++row) {
        DbTableRowValues& values = data.rows.emplace_back();
        for (std::size_t column = 0; column < columns.size(); ++column) {
            values.cells.push_back(column == 1 ? TextCell(std::string(LongText, 'x')) : IntegerCell(1000 + row));
        }
    }
    return data;
}

void WriteAll(DamagedFile& file)
{
    const std::vector<std::string> names = NamesOfTables(file);
    for (const std::string& name : names) {
        const std::string table = Identifier(name);
        std::vector<std::string> columns = Texts(file.Read("PRAGMA table_info(" + table + ")"), 1);
        std::ranges::transform(columns, columns.begin(), Identifier);
        file.Write(table, NewRows(columns));
        file.Update(table, NewRows(columns), "WHERE rowid % 2 = 0");
    }
    if (!names.empty()) {
        file.Rename(names.front(), "renamed");
        file.Drop(names.back());
    }
}

void TryFile(std::span<const std::uint8_t> content)
{
    DamagedFile file(content);
    file.Open(true);
    ReadAll(file);
    file.Close();

    file.Open(false);
    file.Execute("PRAGMA synchronous = OFF");
    WriteAll(file);
    file.Close();

    file.Open(true);
    ReadAll(file);
    file.Close();
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Morvik::sql::tests::TryFile(std::span(data, size));
    return 0;
}
