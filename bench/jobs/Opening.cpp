#include "support/Jobs.h"

#include "contenders/Contenders.h"
#include "support/Databases.h"

namespace Morvik::sql::bench {

namespace {

void RegisterOpen(const char* contender, void (*openAndClose)(const std::string& path))
{
    RegisterJob("open/1", contender, 1000, [=](benchmark::State& state) {
        const std::string path = FilledFile(1000);
        for ([[maybe_unused]] auto round : state) {
            openAndClose(path);
        }
    });
}

} // namespace

void RegisterOpening()
{
    ForEachContender([]<typename Contender> { RegisterOpen(Contender::Name, Contender::OpenAndClose); });
    RegisterOpen("C with stat", PlainC::OpenAndCloseInDirectory);
}

} // namespace Morvik::sql::bench
