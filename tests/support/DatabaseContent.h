#pragma once

#include <filesystem>
#include <map>
#include <stdexcept>
#include <utility>

#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

/// The rows of every table by the table's name, each value as SQLite's `quote()` writes it.
using DatabaseContent = std::map<std::string, std::vector<std::vector<std::string>>>;

/// Opens a database file with raw SQLite, as any program would after a fault, and reads all tables. Throws
/// std::runtime_error when the file cannot be read or SQLite's integrity check finds an error.
inline DatabaseContent ContentOf(const std::string& path)
{
    RawSqlite raw(path);
    if (const std::string finding = raw.Value("PRAGMA integrity_check"); finding != "'ok'") {
        throw std::runtime_error("damaged: " + finding);
    }
    DatabaseContent content;
    for (const auto& row : raw.Rows("SELECT name FROM sqlite_master WHERE type = 'table'")) {
        const std::string name = row.front().substr(1, row.front().size() - 2);
        content[name] = raw.Rows("SELECT * FROM \"" + name + '"');
    }
    return content;
}

/// The content and, if there are tables, the schema as the table "sqlite_master"; no tables if the file does not exist.
inline DatabaseContent ContentAndSchemaOf(const std::string& path)
{
    if (!std::filesystem::exists(path)) {
        return {};
    }
    DatabaseContent content = ContentOf(path);
    auto schema = RawSqlite(path).Rows("SELECT type, name, tbl_name, sql FROM sqlite_master");
    if (!schema.empty()) {
        content["sqlite_master"] = std::move(schema);
    }
    return content;
}

/// The content as one text.
inline std::string Described(const DatabaseContent& content)
{
    std::string text;
    for (const auto& [table, rows] : content) {
        text += table + ":\n";
        for (const auto& row : rows) {
            for (const std::string& value : row) {
                const std::string left = "... of " + std::to_string(value.size());
                text += ' ' + (value.size() > 20 ? value.substr(0, 20) + left : value);
            }
            text += '\n';
        }
    }
    return text;
}

} // namespace Morvik::sql::tests
