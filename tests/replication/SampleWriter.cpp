// Writes rows into a database in WAL mode until it is killed, with the settings that a replication program needs. Each
// row is a transaction. After each acknowledged row it writes a line to standard output: the row's number, and the time
// in microseconds. If SQLite rejects a row because the file is locked, the program writes a line to standard error and
// repeats the row.
//
//   SampleWriter DATABASE ROWS-PER-SECOND      (0: as fast as it can)
#include <sql/DatabaseApi.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>

using namespace Morvik::sql;
using std::chrono::steady_clock;

namespace {

constexpr int Locked = 5;

// Unbuffered, so that a kill loses no line.
bool Say(std::string_view line)
{
    return write(STDOUT_FILENO, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

bool OpenForReplication(DatabaseApi& database, const char* path)
{
    DbTableData mode;
    return database.OpenDatabase(path, false) && database.Execute("PRAGMA busy_timeout = 5000") &&
           database.ReadValues("PRAGMA journal_mode = WAL", mode) && database.CloseReadTable() &&
           std::get<std::string>(mode.rows.at(0).cells.at(0).value) == "wal" &&
           database.Execute("PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 0") &&
           database.CreateTable({"sample", {{"n", DbTableColumnType::Integer}, {"text", DbTableColumnType::Text}}});
}

bool WriteSample(DatabaseApi& database, int n)
{
    const DbTableRowValues row{{{DbTableColumnType::Integer, 0, n},
                                {DbTableColumnType::Text, 0, "sample number " + std::to_string(n) + " of this run"}}};
    return database.WriteTableValues("sample", {{"n", "text"}, {row}});
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    const int rate = std::atoi(argv[2]);
    DatabaseApi database;
    bool written = OpenForReplication(database, argv[1]);
    const steady_clock::time_point begin = steady_clock::now();
    for (int n = 1; written; ++n) {
        if (rate > 0) {
            std::this_thread::sleep_until(begin + std::chrono::microseconds(1'000'000LL * n / rate));
        }
        written = WriteSample(database, n);
        while (!written && database.GetLastError() == Locked) {
            std::cerr << "row " << n << " was refused\n";
            written = WriteSample(database, n);
        }
        const auto passed = std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - begin);
        written = written && Say(std::to_string(n) + ' ' + std::to_string(passed.count()) + '\n');
    }
    std::cerr << database.GetLastError() << ' ' << database.GetLastErrorMsg() << '\n';
    return 1;
}
