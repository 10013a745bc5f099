#pragma once

#include <map>
#include <string>

namespace Morvik::sql::tests {

/// A byte-for-byte copy of a database file and of the files that SQLite adds to it (the journal, the write-ahead log),
/// made by the constructor. No connection of this process may have the files open when they are restored.
class DatabaseFiles {
public:
    /// No files.
    DatabaseFiles() = default;

    explicit DatabaseFiles(const std::string& path);

    /// Restores the files at `path`, and deletes those that the copy does not have.
    void PutBack(const std::string& path) const;

    bool operator==(const DatabaseFiles&) const = default;

    /// The content of each file, by the suffix of its name: "", "-journal", "-wal".
    std::map<std::string, std::string> contents{};
};

} // namespace Morvik::sql::tests
