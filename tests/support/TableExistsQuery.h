#pragma once

#include <string>

namespace Morvik::sql::tests {

/// The query with which the facade tests whether a table exists.
inline std::string TableExistsQuery(const std::string& table)
{
    return "SELECT name FROM sqlite_master WHERE type = 'table' AND name = '" + table + "' COLLATE NOCASE";
}

} // namespace Morvik::sql::tests
