#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace Morvik::sql::tests {

/// Tells what a database file holds, as a text to compare. A file is opened anew with plain SQLite for that, and must
/// pass its integrity check; what was found is remembered for every file with the same bytes.
class KnownContents {
public:
    /// The content of the file at `path`; that of an empty database if there is no file. Throws std::runtime_error for
    /// a file that SQLite cannot read or finds broken.
    std::string Of(const std::string& path);

    /// The bytes from operator new that are held to remember.
    std::size_t BytesHeld() const { return m_bytesHeld; }

private:
    std::map<std::string, std::string> m_contents;
    std::size_t m_bytesHeld = 0;
};

} // namespace Morvik::sql::tests
