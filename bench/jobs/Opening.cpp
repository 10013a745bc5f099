#include "support/Jobs.h"

#include "contenders/Contenders.h"
#include "support/Databases.h"

namespace Morvik::sql::bench {

void RegisterOpening()
{
    ForEachContender([]<typename Contender> {
        RegisterJob("open/1", Contender::Name, 1000, [](benchmark::State& state) {
            const std::string path = FilledFile(1000);
            for ([[maybe_unused]] auto round : state) {
                Contender::OpenAndClose(path);
            }
        });
    });
}

} // namespace Morvik::sql::bench
