#include "support/DatabaseContent.h"

#include <stdexcept>

#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

DatabaseContent ContentOf(const std::string& path)
{
    RawSqlite plain(path);
    if (const std::string finding = plain.Value("PRAGMA integrity_check"); finding != "'ok'") {
        throw std::runtime_error("damaged: " + finding);
    }
    DatabaseContent content;
    for (const auto& row : plain.Rows("SELECT name FROM sqlite_master WHERE type = 'table'")) {
        const std::string name = row.front().substr(1, row.front().size() - 2);
        content[name] = plain.Rows("SELECT * FROM \"" + name + "\" ORDER BY 1");
    }
    return content;
}

std::string Described(const DatabaseContent& content)
{
    std::string text;
    for (const auto& [table, rows] : content) {
        text += table + ":\n";
        for (const auto& row : rows) {
            for (const std::string& value : row) {
                text +=
                    ' ' + (value.size() > 20 ? value.substr(0, 20) + "... of " + std::to_string(value.size()) : value);
            }
            text += '\n';
        }
    }
    return text;
}

} // namespace Morvik::sql::tests
