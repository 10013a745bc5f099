#include "ContentCache.h"

#include <filesystem>
#include <stdexcept>

#include "support/ChildProcess.h"
#include "support/OomInjector.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

void Append(std::string& content, const std::vector<std::vector<std::string>>& rows)
{
    for (const std::vector<std::string>& row : rows) {
        for (const std::string& value : row) {
            content += value + "; ";
        }
        content += '\n';
    }
}

std::string Read(const std::string& path)
{
    RawSqlite plain(path);
    if (const std::string found = plain.Value("PRAGMA integrity_check"); found != "'ok'") {
        throw std::runtime_error("integrity_check: " + found);
    }
    std::string content;
    Append(content, plain.Rows("SELECT type, name, tbl_name, sql FROM sqlite_master ORDER BY name"));
    for (const std::vector<std::string>& table :
         plain.Rows("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")) {
        content += table.front() + ":\n";
        Append(content, plain.Rows("SELECT * FROM " + table.front() + " ORDER BY rowid"));
    }
    return content;
}

} // namespace

std::string ContentCache::Of(const std::string& path)
{
    if (!std::filesystem::exists(path)) {
        return "";
    }
    if (std::filesystem::exists(path + "-journal")) {
        return Read(path); // with a journal, the bytes of the file do not determine the content
    }
    const std::string bytes = FileContent(path);
    if (const auto known = m_contents.find(bytes); known != m_contents.end()) {
        return known->second;
    }
    const std::string content = Read(path);
    const std::size_t before = LiveBytesOfNew();
    m_contents.emplace(bytes, content);
    m_bytesHeld += LiveBytesOfNew() - before;
    return content;
}

} // namespace Morvik::sql::tests
