// Creates the first files of the corpus of damaged database files: make_database_files DIRECTORY

#include <sql/DatabaseApi.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

constexpr int NoTable = -1;

struct Sample {
    std::string name;
    std::string before; // SQL before the table "log" is created
    int rows;           // of the table, or NoTable
    std::size_t length; // of the text in each row
    std::string after;  // SQL after the rows are written
};

const std::string Index = "CREATE INDEX by_name ON log (name, size);";

const std::vector<Sample> Samples{
    {"no-rows", "", 0, 0, ""},
    {"few-rows", "", 5, 3, ""},
    {"two-levels", "", 120, 30, ""},
    {"index", "", 40, 12, Index + "CREATE UNIQUE INDEX by_key ON log (key, content) WHERE size > 1"},
    {"long-rows", "", 3, 1800, ""},
    {"long-keys", "", 4, 600, Index},
    {"free-pages", "", 60, 40, Index + "DELETE FROM log WHERE size > 2"},
    {"vacuumed", "PRAGMA auto_vacuum = FULL", 30, 60, Index + "DELETE FROM log WHERE size < 1"},
    {"utf-16", "PRAGMA encoding = 'UTF-16le'", 10, 20, Index},
    {"counted", "", 2, 2,
     "CREATE TABLE counted (key INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT);"
     "INSERT INTO counted (name) VALUES ('a'), ('b')"},
    {"without-rowid", "", 2, 2,
     "CREATE TABLE sorted (key TEXT PRIMARY KEY, name) WITHOUT ROWID;"
     "INSERT INTO sorted SELECT 'key' || key, name FROM log"},
    {"view-and-trigger", "", 6, 2,
     "CREATE VIEW seen AS SELECT key, upper(name) AS name FROM log;"
     "CREATE TRIGGER copied AFTER INSERT ON log BEGIN DELETE FROM log WHERE key = new.key - 1; END"},
    {"statistics", "", 20, 2, Index + "ANALYZE"},
    {"values", "", 1, 1,
     "CREATE TABLE any (key, value); INSERT INTO any VALUES (1, NULL), ('b', x'00ff00'), "
     "(4294967296, 'a' || char(0) || 'b'), (-1, ''), (1e300, 0.0), (zeroblob(9), 1)"},
    {"logged", "PRAGMA journal_mode = WAL", 3, 10, ""},
    {"table-keys", "", NoTable, 0,
     "CREATE TABLE pairs (key  ,a TEXT ,b TEXT ,PRIMARY KEY (a,b) ON CONFLICT IGNORE);"
     "INSERT INTO pairs VALUES (1, 'x', 'y'), (2, 'x', 'z'), (3, 'x', 'y')"},
};

void Make(const std::string& directory, const Sample& sample)
{
    DatabaseApi database;
    const auto require = [&](bool done) {
        if (!done) {
            throw std::runtime_error(sample.name + ": " + database.GetLastErrorMsg());
        }
    };
    require(database.OpenDatabase(directory + "/" + sample.name, false) &&
            database.Execute("PRAGMA page_size = 512;" + sample.before));
    const DbTableDefinition log{"log",
                                {{"key", DbTableColumnType::Integer, 0, PrimaryKey},
                                 {"name", DbTableColumnType::Text},
                                 {"size", DbTableColumnType::Real},
                                 {"content", DbTableColumnType::Blob}},
                                {}};
    require(sample.rows == NoTable || database.CreateTable(log));
    DbTableDataWrite data;
    for (int row = 0; row < sample.rows; ++row) {
        const auto letter = static_cast<char>('a' + row % 26);
        data.rows.push_back({{IntegerCell(row * row - 2), TextCell(std::string(sample.length, letter)),
                              RealCell(row / 8.0), BlobCell({&letter, 1})}});
    }
    require(data.rows.empty() || database.WriteTableValues("log", data));
    require(sample.after.empty() || database.Execute(sample.after));
}

} // namespace

} // namespace Morvik::sql::tests

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "make_database_files DIRECTORY\n";
        return 2;
    }
    for (const Morvik::sql::tests::Sample& sample : Morvik::sql::tests::Samples) {
        Morvik::sql::tests::Make(argv[1], sample);
    }
    return 0;
}
