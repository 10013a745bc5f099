#include "support/Jobs.h"
#include "support/Machine.h"

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

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
