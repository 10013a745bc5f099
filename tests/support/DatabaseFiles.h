#pragma once

#include <map>
#include <string>

namespace Morvik::sql::tests {

/// A database file and what SQLite keeps beside it (the journal, the write-ahead log), byte for byte, as they stood
/// when the object was made. No connection may have them open in this process when they are put back.
class DatabaseFiles {
public:
    /// No files.
    DatabaseFiles() = default;

    explicit DatabaseFiles(const std::string& path);

    /// Makes the files at `path` these again, and no others.
    void PutBack(const std::string& path) const;

    bool operator==(const DatabaseFiles&) const = default;

    /// The content by the ending of the name: "", "-journal", "-wal".
    std::map<std::string, std::string> contents{};
};

} // namespace Morvik::sql::tests
