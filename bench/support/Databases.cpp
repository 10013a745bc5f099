#include "support/Databases.h"

#include <utility>

#include <sqlite3.h>

#include "contenders/LibraryPrepared.h"
#include "contenders/RawSqlite.h"

namespace Morvik::sql::bench {

namespace {

// The path of a file in this program's directory; the directory is removed when the program ends.
std::string PathOf(const std::string& name, int number)
{
    static const tests::TemporaryDirectory directory;
    return directory.File(name + std::to_string(number) + ".db");
}

} // namespace

std::string NewFile()
{
    static int made = 0;
    return PathOf("database-", ++made);
}

std::string FilledFile(int count)
{
    std::string path = PathOf("filled-", count);
    if (!std::filesystem::exists(path)) {
        RawSqlitePrepared raw(path);
        raw.Execute(CreateTable);
        raw.Insert(SampleRows(count));
    }
    return path;
}

std::vector<std::string> ExecutedTexts(const std::function<void()>& action)
{
    static std::vector<std::string> executed;
    const auto trace = [](sqlite3* handle, char**, const void*) {
        const auto keep = [](unsigned int, void*, void* statement, void*) {
            executed.emplace_back(sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
            return 0;
        };
        return sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, keep, nullptr);
    };
    const auto traceNewConnections = reinterpret_cast<void (*)()>(+trace);
    Require(sqlite3_auto_extension(traceNewConnections) == SQLITE_OK, "trace new connections");
    action();
    sqlite3_cancel_auto_extension(traceNewConnections);
    return std::exchange(executed, {});
}

void RequireRows(const std::string& path, const std::vector<SampleRow>& rows)
{
    // Reads one row at a time. A complete table would change the heap for the jobs that are measured next.
    auto expected = rows.begin();
    LibraryPrepared(path).ForEachRow("SELECT * FROM sample ORDER BY number", [&](const SampleRow& row) {
        Require(expected != rows.end() && row == *expected, "rows written", path.c_str());
        ++expected;
    });
    Require(expected == rows.end(), "rows are missing", path.c_str());
}

} // namespace Morvik::sql::bench
