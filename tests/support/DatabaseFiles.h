#pragma once

#include <filesystem>
#include <fstream>
#include <map>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

/// A byte-for-byte copy of a database file and of the files that SQLite adds to it (the journal, the write-ahead log),
/// made by the constructor. No connection of this process may have the files open when they are restored.
class DatabaseFiles {
public:
    /// No files.
    DatabaseFiles() = default;

    explicit DatabaseFiles(const std::string& path)
    {
        for (const char* ending : Endings) {
            if (std::filesystem::exists(path + ending)) {
                contents[ending] = FileContent(path + ending);
            }
        }
    }

    /// Restores the files at `path`, and deletes those that the copy does not have.
    void PutBack(const std::string& path) const
    {
        std::filesystem::remove(path + "-shm"); // an index, which SQLite creates again
        for (const char* ending : Endings) {
            std::filesystem::remove(path + ending);
        }
        for (const auto& [ending, content] : contents) {
            std::ofstream(path + ending, std::ios::binary) << content;
        }
    }

    bool operator==(const DatabaseFiles&) const = default;

    /// The content of each file, by the suffix of its name.
    std::map<std::string, std::string> contents{};

private:
    static constexpr const char* Endings[] = {"", "-journal", "-wal"};
};

/// Whether the last writer of a database in journal mode DELETE ended between its first write and its commit: then the
/// journal that undoes its changes exists.
inline bool LeftAJournal(const std::string& path)
{
    return !DatabaseFiles(path).contents["-journal"].empty();
}

} // namespace Morvik::sql::tests
