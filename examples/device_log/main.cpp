// Samples this machine's load, memory and temperature as a small device does, and keeps the last samples in a database.
//
//   device_log DATABASE SAMPLES SECONDS [KEEP]
//
// It takes SAMPLES samples, SECONDS apart, and keeps the last KEEP of all runs (default: 1000). SIGINT and SIGTERM stop
// it between two samples.

#include <cmath>
#include <csignal>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/SqlHelpers.h"

namespace {

using namespace Morvik::sql;
using namespace examples;

struct Sample {
    std::string time; // set by SQLite
    double load = 0;
    int memoryUsed = 0;                // in MiB
    std::optional<double> temperature; // in degrees Celsius, nothing on a machine without a sensor
};

Sample SampleFrom(const DbTableRowValues& row)
{
    return {
        .time = Get<std::string>(row, 0),
        .load = Get<double>(row, 1),
        .memoryUsed = Get<int>(row, 2),
        .temperature = GetOptional<double>(row, 3),
    };
}

// The first number in a file; nothing if there is no such file.
std::optional<double> FirstNumber(const std::string& path)
{
    double number = 0;
    return std::ifstream(path) >> number ? std::optional(number) : std::nullopt;
}

// A figure in KiB. /proc/meminfo has lines like "MemTotal:       4028396 kB".
long long MemoryFigure(const std::string& name)
{
    std::ifstream file("/proc/meminfo");
    std::string word;
    while (file >> word && word != name + ":") {
        file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    long long kibibytes = 0;
    return file >> kibibytes ? kibibytes : throw std::runtime_error("cannot read " + name + " from /proc/meminfo");
}

Sample TakeSample()
{
    Sample sample;
    const std::optional<double> load = FirstNumber("/proc/loadavg");
    sample.load = load ? *load : throw std::runtime_error("cannot read /proc/loadavg");
    sample.memoryUsed = static_cast<int>((MemoryFigure("MemTotal") - MemoryFigure("MemAvailable")) / 1024);
    if (const std::optional<double> millidegrees = FirstNumber("/sys/class/thermal/thermal_zone0/temp")) {
        sample.temperature = *millidegrees / 1000;
    }
    return sample;
}

void CreateTable(DatabaseApi& database)
{
    using enum DbTableColumnType;
    const DbTableDefinition definition{
        .name = "sample",
        .columns =
            {
                {.name = "id", .type = Integer, .constraintFlags = PrimaryKey},
                {.name = "time", .type = UnixTimeNow, .constraintFlags = NotNull},
                {.name = "load", .type = Real, .constraintFlags = NotNull},
                {.name = "memory_used", .type = Integer, .constraintFlags = NotNull},
                {.name = "temperature", .type = Real},
            },
    };
    Require(database, database.CreateTable(definition), "create the table");
}

// Adds a sample and deletes the oldest in one transaction, so the log never has more than `keep` samples.
void Add(DatabaseApi& database, const Sample& sample, int keep)
{
    DbTableDataWrite data{
        .columns = {"time", "load", "memory_used"},
        .rows = {{.cells = {UnixTimeCell(), RealCell(sample.load), IntegerCell(sample.memoryUsed)}}},
    };
    if (sample.temperature) { // a column that is left out becomes NULL
        data.columns.emplace_back("temperature");
        data.rows[0].cells.push_back(RealCell(*sample.temperature));
    }

    Transaction transaction(database);
    Require(database, database.WriteTableValues("sample", data), "write a sample");
    Require(database,
            database.Execute("DELETE FROM sample WHERE id <= (SELECT max(id) FROM sample) - " + std::to_string(keep)),
            "delete the oldest sample");
    transaction.Commit();
}

// SQLite formats the time: seconds since 1970 do not fit into a cell's 32 bits after the year 2038.
void PrintLastSamples(DatabaseApi& database)
{
    const std::vector<Sample> samples =
        ReadAll(database,
                "SELECT datetime(time, 'unixepoch', 'localtime'), load, memory_used, temperature "
                "FROM (SELECT * FROM sample ORDER BY id DESC LIMIT 10) ORDER BY id",
                SampleFrom);
    std::cout << "               time   load     memory  temperature\n" << std::fixed;
    for (const Sample& sample : samples) {
        std::cout << sample.time << std::setprecision(2) << std::setw(7) << sample.load << std::setw(7)
                  << sample.memoryUsed << " MiB";
        if (sample.temperature) {
            std::cout << std::setprecision(1) << std::setw(11) << *sample.temperature << " C";
        } else {
            std::cout << std::setw(13) << "none";
        }
        std::cout << '\n';
    }
}

// Blocks SIGINT and SIGTERM, so that they never interrupt a write and only sigtimedwait() receives them.
sigset_t BlockStopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

timespec Duration(double seconds)
{
    timespec duration = {};
    duration.tv_sec = static_cast<time_t>(seconds);
    duration.tv_nsec = static_cast<decltype(duration.tv_nsec)>((seconds - std::floor(seconds)) * 1e9);
    return duration;
}

void Run(const std::string& path, int samples, double seconds, int keep)
{
    const sigset_t signals = BlockStopSignals();
    const timespec interval = Duration(seconds);
    DatabaseApi database;
    Open(database, path);
    CreateTable(database);

    int taken = 0;
    do {
        Add(database, TakeSample(), keep);
        ++taken;
    } while (taken < samples && sigtimedwait(&signals, nullptr, &interval) < 0);

    int code = 0;
    const int kept = database.ExistData("sample", "", code);
    Require(database, code == 0, "count the samples");
    std::cout << "Database: " << path << "\nSamples: " << taken << " written, " << kept << " kept\n\n";
    PrintLastSamples(database);
    Require(database, database.CloseDatabase(), "close " + path);
}

template <typename Number>
Number NumberFrom(const std::string& text)
{
    std::istringstream stream(text);
    Number number{};
    if (!(stream >> number) || !stream.eof() || number <= 0 || number > 1'000'000) {
        throw std::invalid_argument("\"" + text + "\" is not a number above 0 and up to a million");
    }
    return number;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4 || argc > 5 || argv[1][0] == '-') {
        std::cerr << "usage: device_log DATABASE SAMPLES SECONDS [KEEP]\n";
        return 2;
    }
    try {
        Run(argv[1], NumberFrom<int>(argv[2]), NumberFrom<double>(argv[3]),
            NumberFrom<int>(argc == 5 ? argv[4] : "1000"));
        return std::cout.flush() ? 0 : 1;
    } catch (const std::invalid_argument& error) {
        std::cerr << "device_log: " << error.what() << '\n';
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "device_log: " << error.what() << '\n';
        return 1;
    }
}
