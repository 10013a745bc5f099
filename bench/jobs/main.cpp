#include <cstdio>
#include <cstdlib>
#include <limits>

#include <malloc.h>
#include <sqlite3.h>

#include "support/Jobs.h"

namespace {

#if defined(__clang__)
constexpr const char* Compiler = __VERSION__;
#else
constexpr const char* Compiler = "GCC " __VERSION__;
#endif

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
    std::fprintf(output, "{\"compiler\": \"%s\", \"sqlite\": \"%s\",\n\"times\": ", Compiler, sqlite3_libversion());
    jobs.Run(std::atoi(argv[2]), output);
    std::fprintf(output, "}\n");
    return std::fclose(output) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
