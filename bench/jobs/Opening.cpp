#include "support/Jobs.h"

#include "contenders/Contenders.h"
#include "support/Databases.h"

namespace Morvik::sql::bench {

namespace {

void RegisterWithFile(const char* job, const char* contender, void (*act)(const std::string& path))
{
    RegisterJob(job, contender, 1000, [=](benchmark::State& state) {
        const std::string path = FilledFile(1000);
        for ([[maybe_unused]] auto round : state) {
            act(path);
        }
    });
}

} // namespace

void RegisterOpening()
{
    ForEachContender([]<typename Contender> { RegisterWithFile("open/1", Contender::Name, Contender::OpenAndClose); });
    RegisterWithFile("open/1", "C with stat", PlainC::OpenAndCloseFile);
    RegisterWithFile("stat/1", PlainC::Name, PlainC::RequireFile);
}

} // namespace Morvik::sql::bench
