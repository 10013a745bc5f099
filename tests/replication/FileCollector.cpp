// Creates the files of many devices, collects their rows into one file with ATTACH, counts them, and writes to standard
// output how long the collecting took.
//
//   FileCollector FOLDER FILES
#include <sql/DatabaseApi.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>

using namespace Morvik::sql;

namespace {

constexpr int RowsPerFile = 100;
constexpr int FilesAtATime = 10; // SQLite's default limit

const DbTableDefinition Sample{
    "sample",
    {{"device", DbTableColumnType::Integer}, {"n", DbTableColumnType::Integer}, {"value", DbTableColumnType::Real}}};

std::string FileOf(const std::string& folder, int device)
{
    return folder + "/device-" + std::to_string(device) + ".db";
}

bool MakeFile(const std::string& path, int device)
{
    DbTableDataWrite data{{"device", "n", "value"}, {}};
    for (int n = 1; n <= RowsPerFile; ++n) {
        data.rows.push_back({{{DbTableColumnType::Integer, 0, device},
                              {DbTableColumnType::Integer, 0, n},
                              {DbTableColumnType::Real, 0, n / 8.0}}});
    }
    DatabaseApi database;
    return database.OpenDatabase(path, false) && database.Execute("PRAGMA synchronous = OFF") &&
           database.CreateTable(Sample) && database.WriteTableValues("sample", data);
}

bool Collect(DatabaseApi& all, const std::string& folder, int first, int last)
{
    std::string attach;
    std::string copy = "BEGIN;";
    std::string detach;
    for (int device = first; device <= last; ++device) {
        const std::string name = "d" + std::to_string(device - first);
        attach += "ATTACH '" + FileOf(folder, device) + "' AS " + name + ';';
        copy += "INSERT INTO main.sample SELECT * FROM " + name + ".sample;";
        detach += "DETACH " + name + ';';
    }
    return all.Execute(attach) && all.Execute(copy + "COMMIT") && all.Execute(detach);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    const std::string folder = argv[1];
    const int files = std::atoi(argv[2]);
    bool good = true;
    for (int device = 1; good && device <= files; ++device) {
        good = MakeFile(FileOf(folder, device), device);
    }

    const auto begin = std::chrono::steady_clock::now();
    DatabaseApi all;
    good = good && all.OpenDatabase(folder + "/all.db", false) && all.CreateTable(Sample);
    for (int first = 1; good && first <= files; first += FilesAtATime) {
        good = Collect(all, folder, first, std::min(first + FilesAtATime - 1, files));
    }
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;

    DbTableData counts;
    good = good && all.ReadValues("SELECT count(*), count(DISTINCT device || '-' || n) FROM sample", counts);
    if (!good) {
        std::cerr << all.GetLastError() << ' ' << all.GetLastErrorMsg() << '\n';
        return 1;
    }
    const int rows = std::get<int>(counts.rows[0].cells[0].value);
    const int distinct = std::get<int>(counts.rows[0].cells[1].value);
    std::cout << files << ' ' << rows << ' ' << passed.count() << '\n';
    return rows == files * RowsPerFile && distinct == rows ? 0 : 1;
}
