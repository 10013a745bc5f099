#include "support/Machine.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <sys/utsname.h>

#include <fstream>
#include <initializer_list>
#include <string>
#include <string_view>

namespace Morvik::sql::bench {

namespace {

// What follows the separator in the first line that begins with one of the keys.
std::string ValueIn(const char* path, std::initializer_list<std::string_view> keys, char separator)
{
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        for (const std::string_view key : keys) {
            const std::size_t found = line.find(separator);
            if (line.starts_with(key) && found != std::string::npos) {
                const std::size_t begin = line.find_first_not_of(" \"", found + 1);
                const std::size_t end = line.find_last_not_of(" \"");
                return begin <= end ? line.substr(begin, end - begin + 1) : std::string();
            }
        }
    }
    return "unknown";
}

std::string Compiler()
{
#if defined(__clang__)
    return __VERSION__;
#else
    return std::string("GCC ") + __VERSION__;
#endif
}

} // namespace

void AddMachineToContext()
{
    utsname system{};
    uname(&system);
    benchmark::AddCustomContext("processor", ValueIn("/proc/cpuinfo", {"model name", "Hardware", "Model"}, ':'));
    const std::string release = system.release;
    benchmark::AddCustomContext("system", ValueIn("/etc/os-release", {"PRETTY_NAME"}, '=') + ", " + system.sysname +
                                              ' ' + release.substr(0, release.find('-')) + ", " + system.machine);
    benchmark::AddCustomContext("compiler", Compiler());
    benchmark::AddCustomContext("sqlite", sqlite3_libversion());
}

} // namespace Morvik::sql::bench
