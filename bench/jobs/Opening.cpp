#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "contenders/Contenders.h"
#include "support/Databases.h"
#include "support/Jobs.h"

namespace Morvik::sql::bench {

namespace {

constexpr int Openings = 100;

void AddOpening(Jobs& jobs, const char* contender, void (*openAndClose)(const std::string& path))
{
    jobs.Add("open", Openings, 3, contender, [=] {
        const std::string path = FilledFile(1000);
        const auto run = [=] {
            for (int i = 0; i < Openings; ++i) {
                openAndClose(path);
            }
        };
        return Task{[] {}, run, [] {}};
    });
}

} // namespace

void AddOpening(Jobs& jobs)
{
    ForEachContender([&]<typename Contender> {
        if constexpr (Writer<Contender> && requires { Contender::OpenAndClose(std::string()); }) {
            AddOpening(jobs, Contender::Name, Contender::OpenAndClose);
        }
    });
    AddOpening(jobs, "C, access of the directory", [](const std::string& path) {
        Require(access(path.substr(0, path.rfind('/')).c_str(), F_OK) == 0, "directory", path.c_str());
        RawSqlite::OpenAndClose(path);
    });
    AddOpening(jobs, "C, stat of the file", [](const std::string& path) {
        struct stat status {};
        Require(stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode), "file", path.c_str());
        RawSqlite::OpenAndClose(path);
    });
}

} // namespace Morvik::sql::bench
