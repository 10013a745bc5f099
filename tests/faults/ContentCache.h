#pragma once

#include <algorithm>
#include <list>
#include <string>
#include <utility>

#include "support/DatabaseContent.h"
#include "support/DatabaseFiles.h"

namespace Morvik::sql::tests {

/// Reads the content of database files as another process finds it, and their schema as the table "sqlite_master".
/// Files with the same bytes are read only once. No connection may be in a transaction.
class ContentCache {
public:
    /// The content of the file at `path`; an absent file and an empty one have the same content. Throws
    /// std::runtime_error for a file that SQLite cannot read or finds damaged. The result is valid while this object
    /// lives.
    const DatabaseContent& Of(const std::string& path)
    {
        const DatabaseFiles files(path);
        const auto known = std::ranges::find(m_known, files, &std::pair<DatabaseFiles, DatabaseContent>::first);
        if (known != m_known.end()) {
            return known->second;
        }
        return m_known.emplace_back(files, ContentAndSchemaOf(path)).second;
    }

private:
    std::list<std::pair<DatabaseFiles, DatabaseContent>> m_known;
};

} // namespace Morvik::sql::tests
