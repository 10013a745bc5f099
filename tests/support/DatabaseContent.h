#pragma once

#include <map>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The rows of every table by the table's name, ordered by their first column, each value as SQLite's `quote()` writes
/// it.
using DatabaseContent = std::map<std::string, std::vector<std::vector<std::string>>>;

/// Opens a database file with raw SQLite, as any program would after a fault, and reads all tables. Throws
/// std::runtime_error when the file cannot be read or SQLite's integrity check finds an error.
DatabaseContent ContentOf(const std::string& path);

/// The content as one text.
std::string Described(const DatabaseContent& content);

} // namespace Morvik::sql::tests
