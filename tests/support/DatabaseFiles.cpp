#include "support/DatabaseFiles.h"

#include <filesystem>
#include <fstream>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

namespace {

// The files of a database that a copy keeps. The index is not kept, because SQLite creates it again.
constexpr const char* Endings[] = {"", "-journal", "-wal"};
constexpr const char* IndexEnding = "-shm";

} // namespace

DatabaseFiles::DatabaseFiles(const std::string& path)
{
    for (const char* ending : Endings) {
        if (std::filesystem::exists(path + ending)) {
            contents[ending] = FileContent(path + ending);
        }
    }
}

void DatabaseFiles::PutBack(const std::string& path) const
{
    for (const char* ending : Endings) {
        std::filesystem::remove(path + ending);
    }
    std::filesystem::remove(path + IndexEnding);
    for (const auto& [ending, content] : contents) {
        std::ofstream(path + ending, std::ios::binary) << content;
    }
}

} // namespace Morvik::sql::tests
