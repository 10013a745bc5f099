#include "support/Jobs.h"
#include "support/Machine.h"

#include <limits>

#include <malloc.h>

namespace {

// Memory that one job gave back to the system would be paid for anew, page by page, by whichever job comes next.
void KeepFreedMemory()
{
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_MAX, 0);
}

} // namespace

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    KeepFreedMemory();
    bench::ReadRepetitions(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    bench::AddMachineToContext();
    bench::RegisterWriting();
    bench::RegisterReading();
    bench::RegisterBinding();
    bench::RegisterOpening();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
