#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace Morvik::sql::tests {

/// Returns the content of a database file as a text to compare. The file is opened with raw SQLite and must pass
/// SQLite's integrity check. The result is kept for every file with the same bytes.
class ContentCache {
public:
    /// The content of the file at `path`; the content of an empty database if there is no file. Throws
    /// std::runtime_error for a file that SQLite cannot read or finds damaged.
    std::string Of(const std::string& path);

    /// The bytes from operator new that the kept results take.
    std::size_t BytesHeld() const { return m_bytesHeld; }

private:
    std::map<std::string, std::string> m_contents;
    std::size_t m_bytesHeld = 0;
};

} // namespace Morvik::sql::tests
