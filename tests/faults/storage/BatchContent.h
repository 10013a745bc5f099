#pragma once

#include <string>

#include "support/DatabaseContent.h"
#include "support/WriteBatches.h"

namespace Morvik::sql::tests {

/// The content of a file with these tables.
inline DatabaseContent ContentWith(const BatchTables& tables)
{
    DatabaseContent content;
    for (const auto& [table, rows] : tables) {
        auto& written = content[table];
        for (const auto& [id, note] : rows) {
            written.push_back({std::to_string(id), "'" + note + "'"});
        }
    }
    return content;
}

} // namespace Morvik::sql::tests
