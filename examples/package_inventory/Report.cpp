#include "package_inventory/Report.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <ostream>
#include <string>

#include "common/Cells.h"
#include "common/OwnDatabase.h"
#include "common/TextTable.h"

namespace examples {

using Morvik::sql::DbTableData;
using Morvik::sql::DbTableRowValues;

namespace {

constexpr int BarWidth = 24;

std::string Mebibytes(long long kibibytes)
{
    return Fixed(static_cast<double>(kibibytes) / 1024, 1) + " MiB";
}

void PrintTotals(std::ostream& out, OwnDatabase& inventory)
{
    // A sum may exceed the 32 bits that a cell holds, so it is read as text.
    const DbTableData totals =
        inventory.Read("SELECT count(*), CAST(sum(installed_size) AS TEXT) FROM package", "add up the sizes in");
    const DbTableRowValues& total = totals.rows.at(0);
    out << "  " << IntegerOf(total, 0) << " packages take " << Mebibytes(WideIntegerOf(total, 1)) << " ("
        << WideIntegerOf(total, 1) << " KiB)\n";

    const int notInstalled = inventory.Count("package", "WHERE state <> 'installed'");
    if (notInstalled != 0) {
        out << "  not wholly installed, or removed with the configuration left: " << notInstalled << '\n';
    }
}

void PrintLargest(std::ostream& out, OwnDatabase& inventory)
{
    const DbTableData largest = inventory.Read("SELECT name, CAST(installed_size AS TEXT), description FROM package "
                                               "WHERE mark = 'largest' ORDER BY installed_size DESC, name",
                                               "read the largest packages from");
    TextTable table({{"package", Align::Left}, {"size", Align::Right}, {"", Align::Left}, {"what it is", Align::Left}});
    for (const DbTableRowValues& row : largest.rows) {
        const long long size = WideIntegerOf(row, 1);
        table.AddRow(
            {Shortened(TextOf(row, 0), 30), Mebibytes(size),
             Bar(static_cast<double>(size), static_cast<double>(WideIntegerOf(largest.rows.front(), 1)), BarWidth),
             Shortened(TextOf(row, 2), 40)});
    }
    out << "\nThe " << inventory.Count("package", "WHERE mark = 'largest'") << " largest packages\n";
    table.Print(out);
}

struct SizeClass {
    std::string title;
    long long below = 0; // KiB
    int packages = 0;
};

// Walks the packages one by one, so that they need not all be in memory.
void PrintSizeClasses(std::ostream& out, OwnDatabase& inventory)
{
    std::array<SizeClass, 5> classes = {{{"below 100 KiB", 100},
                                         {"100 KiB to 1 MiB", 1024},
                                         {"1 to 10 MiB", 10LL * 1024},
                                         {"10 to 100 MiB", 100LL * 1024},
                                         {"100 MiB and more"}}};
    inventory.Require(inventory.Api().SqlQueryBegin("SELECT CAST(installed_size AS TEXT) FROM package"),
                      "walk the packages in");
    for (const DbTableRowValues& row : inventory.Api()) {
        const long long size = WideIntegerOf(row, 0);
        ++std::find_if(classes.begin(), std::prev(classes.end()), [=](const SizeClass& candidate) {
              return size < candidate.below;
          })->packages; // what fits nowhere else belongs to the last class
    }
    // The loop ends at the last row and at a failure alike; the code tells them apart.
    inventory.Require(inventory.Api().Succeeded(), "walk the packages in");
    inventory.Require(inventory.Api().CloseReadTable(), "walk the packages in");

    int most = 0;
    for (const SizeClass& sizeClass : classes) {
        most = std::max(most, sizeClass.packages);
    }
    TextTable table({{"size", Align::Left}, {"packages", Align::Right}, {"", Align::Left}});
    for (const SizeClass& sizeClass : classes) {
        table.AddRow({sizeClass.title, std::to_string(sizeClass.packages), Bar(sizeClass.packages, most, BarWidth)});
    }
    out << "\nHow large packages are\n";
    table.Print(out);
}

void PrintSections(std::ostream& out, OwnDatabase& inventory)
{
    const DbTableData sections = inventory.Read("SELECT section, count(*), CAST(sum(installed_size) AS TEXT) "
                                                "FROM package GROUP BY section ORDER BY count(*) DESC, section",
                                                "read the sections from");
    TextTable table({{"section", Align::Left}, {"packages", Align::Right}, {"", Align::Left}, {"size", Align::Right}});
    for (const DbTableRowValues& row : sections.rows) {
        const std::string& section = TextOf(row, 0);
        const int packages = IntegerOf(row, 1);
        table.AddRow({section.empty() ? "(none)" : Shortened(section, 30), std::to_string(packages),
                      Bar(packages, IntegerOf(sections.rows.front(), 1), BarWidth), Mebibytes(WideIntegerOf(row, 2))});
    }
    out << "\nPackages per section\n";
    table.Print(out);
}

} // namespace

void PrintReport(std::ostream& out, OwnDatabase& inventory)
{
    PrintTotals(out, inventory);
    PrintLargest(out, inventory);
    PrintSizeClasses(out, inventory);
    PrintSections(out, inventory);
}

} // namespace examples
