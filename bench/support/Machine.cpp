#include "support/Machine.h"

#include <ctime>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <sqlite3.h>
#include <sys/utsname.h>

namespace Morvik::sql::bench {

namespace {

// Returns the text after the separator in the first line that begins with one of the keys, without quotation marks.
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

std::string Now()
{
    const std::time_t now = std::time(nullptr);
    char text[std::size("2000-01-01 00:00 UTC")];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
    return text;
}

} // namespace

void WriteMachine(std::FILE* output)
{
    utsname system{};
    uname(&system);
    const std::string release = system.release;
    const std::pair<const char*, std::string> facts[] = {
        {"date", Now()},
        {"processor", ValueIn("/proc/cpuinfo", {"model name", "Hardware", "Model"}, ':')},
        {"cores", std::to_string(std::thread::hardware_concurrency())},
        {"system", ValueIn("/etc/os-release", {"PRETTY_NAME"}, '=') + ", " + system.sysname + ' ' +
                       release.substr(0, release.find('-')) + ", " + system.machine},
        {"compiler", Compiler()},
        {"sqlite", sqlite3_libversion()},
        {"load", ValueIn("/proc/loadavg", {""}, ' ')}};
    const char* separator = "{";
    for (const auto& [name, value] : facts) {
        std::fprintf(output, "%s\"%s\": \"%s\"", separator, name, value.c_str());
        separator = ", ";
    }
    std::fprintf(output, "}");
}

} // namespace Morvik::sql::bench
