#pragma once

#include <map>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The rows of every table by the table's name, ordered by their first column, each value as SQLite's `quote()` writes
/// it.
using DatabaseContent = std::map<std::string, std::vector<std::vector<std::string>>>;

/// Opens a database file as any program would after a fault, and reads it whole past the library. Throws
/// std::runtime_error when the file cannot be read or SQLite's integrity check finds anything.
DatabaseContent ContentOf(const std::string& path);

/// The content in one text.
std::string Described(const DatabaseContent& content);

} // namespace Morvik::sql::tests
