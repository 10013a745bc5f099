// Creates the first files of the corpus of damaged database files: make_database_files DIRECTORY

#include <sql/DatabaseApi.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

void Require(bool done, const DatabaseApi& database)
{
    if (!done) {
        throw std::runtime_error(database.GetLastErrorMsg());
    }
}

DbTableDefinition Log()
{
    DbTableDefinition table;
    table.name = "log";
    table.columns = {{"key", DbTableColumnType::Integer, 0, PrimaryKey},
                     {"name", DbTableColumnType::Text},
                     {"size", DbTableColumnType::Real},
                     {"content", DbTableColumnType::Blob}};
    return table;
}

DbTableDefinition Pairs()
{
    DbTableDefinition table;
    table.name = "pairs";
    table.columns = {{"key", DbTableColumnType::None}, {"a", DbTableColumnType::Text}, {"b", DbTableColumnType::Text}};
    table.constraints.primaryKey = {'a', 'b'};
    return table;
}

void Fill(DatabaseApi& database, const std::string& table, int rows, std::size_t length)
{
    DbTableDataWrite data;
    for (int row = 0; row < rows; ++row) {
        const auto letter = static_cast<char>('a' + row % 26);
        data.rows.push_back({{IntegerCell(row * row - 2), TextCell(std::string(length, letter)), RealCell(row / 8.0),
                              BlobCell({&letter, 1})}});
    }
    Require(database.WriteTableValues(table, data), database);
}

void Make(const std::string& path, const std::vector<std::string>& before, int rows, std::size_t length,
          const std::vector<std::string>& after)
{
    DatabaseApi database;
    Require(database.OpenDatabase(path, false) && database.Execute("PRAGMA page_size = 512"), database);
    for (const std::string& sql : before) {
        Require(database.Execute(sql), database);
    }
    Require(database.CreateTable(Log()), database);
    if (rows > 0) {
        Fill(database, "log", rows, length);
    }
    for (const std::string& sql : after) {
        Require(database.Execute(sql), database);
    }
    std::cout << path << '\n';
}

void MakeAll(const std::string& directory)
{
    const std::string index = "CREATE INDEX by_name ON log (name, size)";
    Make(directory + "/no-rows", {}, 0, 0, {});
    Make(directory + "/few-rows", {}, 5, 3, {});
    Make(directory + "/two-levels", {}, 120, 30, {});
    Make(directory + "/index", {}, 40, 12, {index, "CREATE UNIQUE INDEX by_key ON log (key, content) WHERE size > 1"});
    Make(directory + "/long-rows", {}, 3, 1800, {});
    Make(directory + "/long-keys", {}, 4, 600, {index});
    Make(directory + "/free-pages", {}, 60, 40, {index, "DELETE FROM log WHERE size > 2"});
    Make(directory + "/vacuumed", {"PRAGMA auto_vacuum = FULL"}, 30, 60, {index, "DELETE FROM log WHERE size < 1"});
    Make(directory + "/utf-16", {"PRAGMA encoding = 'UTF-16le'"}, 10, 20, {index});
    Make(directory + "/counted", {}, 2, 2,
         {"CREATE TABLE counted (key INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT)",
          "INSERT INTO counted (name) VALUES ('a'), ('b')"});
    Make(directory + "/without-rowid", {}, 2, 2,
         {"CREATE TABLE sorted (key TEXT PRIMARY KEY, name) WITHOUT ROWID",
          "INSERT INTO sorted SELECT 'key' || key, name FROM log"});
    Make(directory + "/view-and-trigger", {}, 6, 2,
         {"CREATE VIEW seen AS SELECT key, upper(name) AS name FROM log",
          "CREATE TRIGGER copied AFTER INSERT ON log BEGIN DELETE FROM log WHERE key = new.key - 1; END"});
    Make(directory + "/statistics", {}, 20, 2, {index, "ANALYZE"});
    Make(directory + "/values", {}, 1, 1,
         {"CREATE TABLE any (key, value)",
          "INSERT INTO any VALUES (1, NULL), ('b', x'00ff00'), "
          "(4294967296, 'a' || char(0) || 'b'), (-1, ''), (1e300, 0.0), (zeroblob(9), 1)"});
    Make(directory + "/logged", {"PRAGMA journal_mode = WAL"}, 3, 10, {});

    DatabaseApi database;
    Require(database.OpenDatabase(directory + "/table-keys", false) && database.Execute("PRAGMA page_size = 512") &&
                database.CreateTable(Pairs()),
            database);
    Require(database.Execute("INSERT INTO pairs VALUES (1, 'x', 'y'), (2, 'x', 'z'), (3, 'x', 'y')"), database);
}

} // namespace

} // namespace Morvik::sql::tests

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "make_database_files DIRECTORY\n";
        return 2;
    }
    Morvik::sql::tests::MakeAll(argv[1]);
    return 0;
}
