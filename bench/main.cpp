#include "support/Jobs.h"

#include <sqlite3.h>

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::AddCustomContext("sqlite_version", sqlite3_libversion());
    bench::RegisterWriting();
    bench::RegisterReading();
    bench::RegisterBinding();
    bench::RegisterOpening();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
