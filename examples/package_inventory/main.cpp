// Keeps an inventory of the installed Debian packages in a database and prints what changed since the previous run.
//
//   package_inventory DATABASE [STATUS-FILE]

#include <chrono>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/SqlHelpers.h"

namespace {

using namespace Morvik::sql;
using namespace examples;

struct Package {
    std::string name;
    std::string architecture;
    std::string version;
    std::optional<std::string> section;
    std::optional<int> installedSize; // in KiB
    std::string summary;

    bool operator==(const Package&) const = default;
};

struct Changes {
    int added = 0;
    int removed = 0;
    int upgraded = 0;
};

Package PackageFrom(const DbTableRowValues& row)
{
    return {
        .name = Get<std::string>(row, 0),
        .architecture = Get<std::string>(row, 1),
        .version = Get<std::string>(row, 2),
        .section = GetOptional<std::string>(row, 3),
        .installedSize = GetOptional<int>(row, 4),
        .summary = Get<std::string>(row, 5),
    };
}

Changes ChangesFrom(const DbTableRowValues& row)
{
    return {.added = Get<int>(row, 0), .removed = Get<int>(row, 1), .upgraded = Get<int>(row, 2)};
}

using Fields = std::map<std::string, std::string>;

// The next paragraph of a status file, up to an empty line: lines of "Name: value". The lines that continue a value
// begin with a blank and are skipped.
Fields ReadParagraph(std::istream& file)
{
    Fields fields;
    for (std::string line; std::getline(file, line) && !line.empty();) {
        const std::size_t colon = line.find(": ");
        if (colon != std::string::npos && line.front() != ' ') {
            fields.emplace(line.substr(0, colon), line.substr(colon + 2));
        }
    }
    return fields;
}

std::optional<std::string> Optional(const Fields& fields, const std::string& name)
{
    const auto field = fields.find(name);
    return field != fields.end() ? std::optional(field->second) : std::nullopt;
}

std::string Required(const Fields& fields, const std::string& name)
{
    const std::optional<std::string> value = Optional(fields, name);
    return value ? *value : throw std::runtime_error("the status file has a package without the field " + name);
}

std::optional<int> OptionalSize(const Fields& fields)
{
    const std::optional<std::string> text = Optional(fields, "Installed-Size");
    if (!text) {
        return std::nullopt;
    }
    int size = 0;
    if (!(std::istringstream(*text) >> size)) {
        throw std::runtime_error("the status file has a package of the size " + *text);
    }
    return size;
}

std::vector<Package> ReadStatusFile(const std::string& path)
{
    std::ifstream file(path);
    std::vector<Package> packages;
    while (file) {
        const Fields fields = ReadParagraph(file);
        if (Optional(fields, "Status").value_or("").ends_with(" installed")) {
            packages.push_back({
                .name = Required(fields, "Package"),
                .architecture = Required(fields, "Architecture"),
                .version = Required(fields, "Version"),
                .section = Optional(fields, "Section"),
                .installedSize = OptionalSize(fields),
                .summary = Optional(fields, "Description").value_or(""),
            });
        }
    }
    if (!file.eof() || packages.empty()) {
        throw std::runtime_error("cannot read packages from " + path);
    }
    return packages;
}

void CreateTable(DatabaseApi& database)
{
    using enum DbTableColumnType;
    const DbTableDefinition definition{
        .name = "package",
        .columns =
            {
                {.name = "id", .type = Integer, .constraintFlags = PrimaryKey},
                {.name = "name", .type = Text, .constraintFlags = NotNull},
                {.name = "architecture", .type = Text, .constraintFlags = NotNull},
                {.name = "version", .type = Text, .constraintFlags = NotNull},
                {.name = "section", .type = Text},
                {.name = "installed_size", .type = Integer},
                {.name = "summary", .type = Text, .constraintFlags = NotNull},
            },
    };
    Require(database, database.CreateTable(definition), "create the table");
}

// The texts come from outside and may have apostrophes, so they are bound to parameters.
void Insert(DatabaseApi& database, const std::vector<Package>& packages)
{
    SqlCommand insert = Prepare(database, "INSERT INTO package (name, architecture, version, section, installed_size, "
                                          "summary) VALUES (?, ?, ?, ?, ?, ?)");
    for (const Package& package : packages) {
        Require(insert,
                insert.BindText(1, package.name) && insert.BindText(2, package.architecture) &&
                    insert.BindText(3, package.version) && BindOptional(insert, 4, package.section) &&
                    BindOptional(insert, 5, package.installedSize) && insert.BindText(6, package.summary) &&
                    insert.Step() && insert.Reset(),
                "insert " + package.name);
    }
}

// Replaces the table in one transaction. Returns what changed, or nothing if there was no earlier table.
std::optional<Changes> Replace(DatabaseApi& database, const std::vector<Package>& packages)
{
    Transaction transaction(database);
    int code = 0;
    const bool hasEarlier = database.ExistsTable("package", code);
    Require(database, code == 0, "look for the table");
    if (hasEarlier) {
        Require(database, database.AlterTable("package", "earlier"), "rename the table");
    }
    CreateTable(database);
    Insert(database, packages);

    std::optional<Changes> changes;
    if (hasEarlier) {
        changes = ReadAll(database,
                          "WITH added AS (SELECT name, architecture FROM package"
                          "               EXCEPT SELECT name, architecture FROM earlier),"
                          "     removed AS (SELECT name, architecture FROM earlier"
                          "                 EXCEPT SELECT name, architecture FROM package) "
                          "SELECT (SELECT count(*) FROM added), (SELECT count(*) FROM removed),"
                          "       (SELECT count(*) FROM package JOIN earlier USING (name, architecture)"
                          "        WHERE package.version <> earlier.version)",
                          ChangesFrom)
                      .at(0);
        Require(database, database.DropTable("earlier"), "drop the earlier table");
    }
    transaction.Commit();
    return changes;
}

// SQLite stores the statement that created a table. A line break after each comma makes it readable.
void PrintTable(DatabaseApi& database)
{
    const Query query(database,
                      "SELECT replace(sql, ',', ',' || char(10) || '    ') FROM sqlite_master WHERE name = 'package'");
    for (const DbTableRowValues& row : query) {
        std::cout << "The table that the library created, as SQLite stores it:\n" << Get<std::string>(row, 0) << "\n\n";
    }
    query.Finish();
}

// A cell holds no more than 32 bits of an integer, so the sizes are divided and read as real numbers.
void PrintLargest(DatabaseApi& database)
{
    const Query query(database, "SELECT name, installed_size / 1024.0, summary FROM package "
                                "WHERE installed_size IS NOT NULL ORDER BY installed_size DESC, name LIMIT 5");
    std::cout << "The largest packages:\n";
    for (const DbTableRowValues& row : query) {
        std::cout << std::setw(8) << Get<double>(row, 1) << " MiB  " << Get<std::string>(row, 0) << ", "
                  << Get<std::string>(row, 2) << '\n';
    }
    query.Finish();
}

void Run(const std::string& path, const std::string& statusFile)
{
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::duration<double, std::milli>;
    const std::vector<Package> packages = ReadStatusFile(statusFile);
    DatabaseApi database;
    Open(database, path);

    const auto start = Clock::now();
    const std::optional<Changes> changes = Replace(database, packages);
    const auto written = Clock::now();
    const std::vector<Package> read = ReadAll(
        database, "SELECT name, architecture, version, section, installed_size, summary FROM package", PackageFrom);
    const auto end = Clock::now();
    if (read != packages) {
        throw std::runtime_error("the rows in " + path + " are not those that were written");
    }

    std::cout << std::fixed << std::setprecision(1);
    std::cout << "Database: " << path << "\n"
              << "Rows: " << read.size() << ", written in one transaction in " << Milliseconds(written - start).count()
              << " ms, read back in " << Milliseconds(end - written).count() << " ms\n\n";
    PrintTable(database);
    PrintLargest(database);
    if (changes) {
        std::cout << "\nSince the previous run: " << changes->added << " added, " << changes->removed << " removed, "
                  << changes->upgraded << " in another version\n";
    }
    Require(database, database.CloseDatabase(), "close " + path);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 3 || argv[1][0] == '-') {
        std::cerr << "usage: package_inventory DATABASE [STATUS-FILE]\n";
        return 2;
    }
    try {
        Run(argv[1], argc == 3 ? argv[2] : "/var/lib/dpkg/status");
        return std::cout.flush() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "package_inventory: " << error.what() << '\n';
        return 1;
    }
}
