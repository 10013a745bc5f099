// Opens, reads, walks, counts and writes a file with any content. This must do no harm, and every outcome must be that
// of the reference implementation on a copy of the file.

#include <algorithm>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "fuzz/ComparedFacades.h"
#include "fuzz/FuzzTarget.h"
#include "support/DatabaseFiles.h"
#include "support/Quoting.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t LongSize = 700; // a row that does not fit on a page of 512 bytes

std::string Identifier(const std::string& name)
{
    return Quoted(name, '"');
}

/// Two copies of one database file with any content: the library uses one, the reference implementation the other.
class DamagedFile : public ComparedFacades {
public:
    explicit DamagedFile(std::span<const std::uint8_t> content)
        : ComparedFacades(Directory() + "library", Directory() + "reference")
    {
        DatabaseFiles files;
        files.contents[""].assign(content.begin(), content.end());
        files.PutBack(Directory() + "library.db");
        files.PutBack(Directory() + "reference.db");
    }

    /// The texts in a column of the query; a damaged file may have other types in that column.
    std::vector<std::string> Texts(const std::string& sql, std::size_t column)
    {
        Both([&](auto& side) { return side.Read(sql); });
        std::vector<std::string> texts;
        for (const DbTableRowValues& row : Data().rows) {
            const auto* const text =
                column < row.cells.size() ? std::get_if<std::string>(&row.cells[column].value) : nullptr;
            if (text != nullptr && !text->empty()) {
                texts.push_back(*text);
            }
        }
        return texts;
    }

    std::vector<std::string> NamesOfTables()
    {
        return Texts("SELECT name FROM sqlite_master WHERE type IN ('table', 'view') LIMIT 5", 0);
    }

private:
    // Created once for all inputs, because creating a directory takes longer than most inputs.
    static std::string Directory()
    {
        static const TemporaryDirectory directory;
        return directory.Path().string() + '/';
    }
};

void ReadAll(DamagedFile& file)
{
    file.Both([](auto& side) { return side.Open(".db", true); });
    for (const std::string& name : file.NamesOfTables()) {
        const std::string table = Identifier(name);
        file.Both([&](auto& side) { return side.Exists(name); });
        file.Both([&](auto& side) { return side.ReadTable(table); });
        file.Both([&](auto& side) { return side.Read("SELECT * FROM " + table + " ORDER BY 2 DESC"); });
        file.Both([&](auto& side) { return side.Walk("SELECT rowid, * FROM " + table + " WHERE rowid > 1"); });
        file.Both([](auto& side) { return side.CloseTable(); });
        // Without a condition, SQLite counts in one operation, which cannot be stopped if the pages form a cycle.
        file.Both([&](auto& side) { return side.Count(name, "WHERE 1"); });
        file.Both([&](auto& side) { return side.Count(name, "WHERE key = 'b' OR key > 3"); });
    }
    file.Both([](auto& side) { return side.CloseAll(); });
}

DbTableDataWrite NewRows(const std::vector<std::string>& columns)
{
    DbTableDataWrite data{columns, {}};
    for (int row = 0; row < 2; ++row) {
        DbTableRowValues& values = data.rows.emplace_back();
        values.cells.assign(columns.size(), IntegerCell(1000 + row));
        if (columns.size() > 1) {
            values.cells[1] = TextCell(std::string(LongSize, 'x'));
        }
    }
    return data;
}

void WriteAll(DamagedFile& file)
{
    file.Both([](auto& side) { return side.Open(".db", false); });
    file.Both([](auto& side) { return side.Execute("PRAGMA synchronous = OFF"); });
    const std::vector<std::string> names = file.NamesOfTables();
    for (const std::string& name : names) {
        const std::string table = Identifier(name);
        std::vector<std::string> columns = file.Texts("PRAGMA table_info(" + table + ")", 1);
        std::ranges::transform(columns, columns.begin(), Identifier);
        const DbTableDataWrite rows = NewRows(columns);
        file.Both([&](auto& side) { return side.Write(table, rows); });
        file.Both([&](auto& side) { return side.Update(table, rows, "WHERE rowid % 2 = 0"); });
    }
    if (!names.empty()) {
        file.Both([&](auto& side) { return side.Alter(names.front(), "renamed"); });
        file.Both([&](auto& side) { return side.Drop(names.back()); });
    }
    file.Both([](auto& side) { return side.CloseAll(); });
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Morvik::sql::tests::DamagedFile file(std::span(data, size));
    Morvik::sql::tests::ReadAll(file);
    Morvik::sql::tests::WriteAll(file);
    Morvik::sql::tests::ReadAll(file);
    return 0;
}
