#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <malloc.h>
#include <sqlite3.h>
#include <sys/utsname.h>

#include "support/Jobs.h"

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

std::string Now()
{
    const std::time_t now = std::time(nullptr);
    char text[std::size("2000-01-01 00:00 UTC")];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
    return text;
}

// Writes a JSON object that describes the machine.
void WriteMachine(std::FILE* output)
{
    utsname system{};
    uname(&system);
    const std::string release = system.release;
#if defined(__clang__)
    const std::string compiler = __VERSION__;
#else
    const std::string compiler = std::string("GCC ") + __VERSION__;
#endif
    const std::pair<const char*, std::string> facts[] = {
        {"date", Now()},
        {"processor", ValueIn("/proc/cpuinfo", {"model name", "Hardware", "Model"}, ':')},
        {"cores", std::to_string(std::thread::hardware_concurrency())},
        {"system", ValueIn("/etc/os-release", {"PRETTY_NAME"}, '=') + ", " + system.sysname + ' ' +
                       release.substr(0, release.find('-')) + ", " + system.machine},
        {"compiler", compiler},
        {"sqlite", sqlite3_libversion()},
        {"load", ValueIn("/proc/loadavg", {""}, ' ')}};
    const char* separator = "{";
    for (const auto& [name, value] : facts) {
        std::fprintf(output, "%s\"%s\": \"%s\"", separator, name, value.c_str());
        separator = ", ";
    }
    std::fprintf(output, "}");
}

// If freed memory were returned to the system, the next job's time would include getting it back, page by page.
void KeepFreedMemory()
{
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_MAX, 0);
}

} // namespace

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    std::FILE* const output = argc >= 3 ? std::fopen(argv[1], "w") : nullptr;
    if (output == nullptr) {
        std::fprintf(stderr,
                     "usage: %s OUTPUT.json ROUNDS [LARGEST]\n"
                     "Measures every job on at most LARGEST rows; with 0 rounds, does and checks each job once.\n",
                     argv[0]);
        return EXIT_FAILURE;
    }
    KeepFreedMemory();
    bench::Jobs jobs(argc >= 4 ? std::atoi(argv[3]) : std::numeric_limits<int>::max());
    bench::AddWriting(jobs);
    bench::AddReading(jobs);
    bench::AddOpening(jobs);
    bench::AddGrowth(jobs);
    std::fprintf(output, "{\"machine\": ");
    WriteMachine(output);
    std::fprintf(output, ",\n\"times\": ");
    jobs.Run(std::atoi(argv[2]), output);
    std::fprintf(output, "}\n");
    return std::fclose(output) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
