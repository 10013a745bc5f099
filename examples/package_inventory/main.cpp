// Keeps an inventory of the packages that dpkg has installed, and tells what has changed since the last run.

#include <getopt.h>

#include <array>
#include <iostream>
#include <optional>
#include <string>

#include "common/Failure.h"
#include "common/Program.h"
#include "package_inventory/Inventory.h"
#include "package_inventory/Report.h"
#include "package_inventory/StatusFile.h"

namespace {

using namespace examples;

const std::string Usage = R"(Usage: package_inventory [--database PATH] [STATUS-FILE]

Reads a dpkg status file (by default /var/lib/dpkg/status), keeps its packages in
an SQLite database and reports on them. A later run replaces the inventory and
tells what has changed.

  --database PATH   the database (by default
                    ~/.local/share/package_inventory/inventory.db);
                    missing directories are created
  --help            this text
)";

struct Options {
    std::string statusFile = "/var/lib/dpkg/status";
    std::string database{};
    bool help = false;
};

Options OptionsOf(int argc, char** argv)
{
    static const std::array<option, 3> Known = {
        {{"database", required_argument, nullptr, 'd'}, {"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}}};
    Options options;
    opterr = 0;
    for (int name = 0; (name = getopt_long(argc, argv, ":", Known.data(), nullptr)) != -1;) {
        if (name == 'd') {
            options.database = DatabasePath(optarg);
        } else if (name == 'h') {
            options.help = true;
        } else {
            throw UsageFailure(std::string(argv[optind - 1]) +
                               (name == ':' ? " needs a value" : " is no option; try --help"));
        }
    }
    if (argc - optind > 1) {
        throw UsageFailure("one status file at most; try --help");
    }
    if (optind < argc) {
        options.statusFile = argv[optind];
    }
    return options;
}

void Run(const Options& options)
{
    if (options.help) {
        std::cout << Usage;
        return;
    }
    constexpr int Marked = 10;
    const std::vector<Package> packages = ReadStatusFile(options.statusFile);
    Inventory inventory(options.database.empty() ? DefaultDatabasePath("package_inventory", "inventory.db")
                                                 : options.database);
    const std::optional<Changes> changes = inventory.Replace(packages, Marked);

    std::cout << "Inventory of " << options.statusFile << " in " << inventory.Database().Path() << '\n';
    PrintReport(std::cout, inventory.Database());
    if (changes) {
        std::cout << "\nSince the last inventory: " << changes->added << " new, " << changes->removed << " gone, "
                  << changes->upgraded << " in another version\n";
    }
    inventory.Database().Close();
}

} // namespace

int main(int argc, char** argv)
{
    return RunProgram("package_inventory", [&] { Run(OptionsOf(argc, argv)); });
}
