#include "device_log/Chart.h"

#include <ostream>
#include <string>

#include "common/Cells.h"
#include "common/OwnDatabase.h"
#include "common/TextTable.h"

namespace examples {

using Morvik::sql::DbTableData;
using Morvik::sql::DbTableRowValues;

namespace {

constexpr int BarWidth = 20;

std::string Hours(int seconds)
{
    return Fixed(seconds / 3600.0, 1) + " h";
}

} // namespace

void PrintLastSamples(std::ostream& out, OwnDatabase& log, int count)
{
    const std::string last = "(SELECT * FROM sample ORDER BY id DESC LIMIT " + std::to_string(count) + ")";
    const DbTableData highest = log.Read("SELECT coalesce(max(load), 0.0) FROM " + last, "read the samples of");
    const double highestLoad = RealOf(highest.rows.at(0), 0);

    // SQLite makes a date of the time: read as a number it would not fit into a cell's 32 bits after the year 2038.
    log.Require(log.Api().SqlQueryBegin("SELECT datetime(time, 'unixepoch', 'localtime'), load, memory_used, "
                                        "memory_total, disk_used, uptime FROM " +
                                        last + " ORDER BY id"),
                "walk the samples of");
    TextTable table({{"time", Align::Left},
                     {"load", Align::Right},
                     {"", Align::Left},
                     {"memory used", Align::Right},
                     {"", Align::Left},
                     {"disk used", Align::Right},
                     {"uptime", Align::Right}});
    for (const DbTableRowValues& row : log.Api()) {
        const double load = RealOf(row, 1);
        const int memoryUsed = IntegerOf(row, 2);
        table.AddRow({TextOf(row, 0), Fixed(load, 2), Bar(load, highestLoad, BarWidth),
                      std::to_string(memoryUsed) + " MiB", Bar(memoryUsed, IntegerOf(row, 3), BarWidth),
                      Fixed(RealOf(row, 4), 1) + " %", Hours(IntegerOf(row, 5))});
    }
    // The loop ends at the last row and at a failure alike; the code tells them apart.
    log.Require(log.Api().Succeeded(), "walk the samples of");
    log.Require(log.Api().CloseReadTable(), "walk the samples of");
    table.Print(out);
}

} // namespace examples
