#include "device_log/Machine.h"

#include <sys/statvfs.h>

#include <cerrno>
#include <fstream>
#include <limits>
#include <system_error>

#include "common/Failure.h"

namespace examples {

namespace {

// The first number in a file such as "0.42 0.36 0.30 1/123 4567".
double FirstNumber(const std::string& path)
{
    std::ifstream file(path);
    double number = 0;
    if (!(file >> number)) {
        throw Failure("cannot read " + path);
    }
    return number;
}

// A figure of /proc/meminfo, which has lines such as "MemTotal:       4028396 kB".
int MemoryFigure(const std::string& wanted)
{
    std::ifstream file("/proc/meminfo");
    std::string name;
    long long kibibytes = 0;
    while (file >> name >> kibibytes) {
        if (name == wanted + ":") {
            return static_cast<int>(kibibytes / 1024);
        }
        file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    throw Failure("cannot read " + wanted + " from /proc/meminfo");
}

double DiskUsed(const std::string& directory)
{
    struct statvfs disk = {};
    if (statvfs(directory.c_str(), &disk) != 0) {
        throw Failure("cannot look at the disk of " + directory + ": " + std::generic_category().message(errno));
    }
    // Blocks kept for root are neither used nor to be had, so they count on neither side.
    const auto used = static_cast<double>(disk.f_blocks - disk.f_bfree);
    const double reachable = used + static_cast<double>(disk.f_bavail);
    return reachable > 0 ? 100 * used / reachable : 0;
}

} // namespace

Sample TakeSample(const std::string& directory)
{
    Sample sample;
    sample.load = FirstNumber("/proc/loadavg");
    sample.memoryTotal = MemoryFigure("MemTotal");
    sample.memoryUsed = sample.memoryTotal - MemoryFigure("MemAvailable");
    sample.diskUsed = DiskUsed(directory);
    sample.uptime = static_cast<int>(FirstNumber("/proc/uptime"));
    return sample;
}

} // namespace examples
