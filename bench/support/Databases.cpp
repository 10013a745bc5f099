#include "support/Databases.h"

#include <cstddef>

#include <sqlite3.h>

#include "contenders/RawSqlite.h"

namespace Morvik::sql::bench {

const tests::TemporaryDirectory& Directory()
{
    static const tests::TemporaryDirectory directory;
    return directory;
}

std::string NewFile()
{
    static int made = 0;
    return Directory().File("database-" + std::to_string(++made) + ".db");
}

std::string FilledFile(int count)
{
    std::string path = Directory().File("filled-" + std::to_string(count) + ".db");
    if (!std::filesystem::exists(path)) {
        RawSqlite raw(path);
        raw.Execute(CreateTable);
        raw.Execute("BEGIN");
        raw.InsertBound(SampleRows(count));
        raw.Execute("COMMIT");
    }
    return path;
}

void RequireRows(const std::string& path, const std::vector<SampleRow>& rows)
{
    sqlite3* handle = nullptr;
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_open(path.c_str(), &handle) == SQLITE_OK, "open the copy", path.c_str());
    Require(sqlite3_prepare_v2(handle, "SELECT * FROM sample ORDER BY number", -1, &statement, nullptr) == SQLITE_OK,
            "read the copy", sqlite3_errmsg(handle));
    for (const SampleRow& row : rows) {
        Require(sqlite3_step(statement) == SQLITE_ROW, "a row is missing");
        const auto* const label = reinterpret_cast<const char*>(sqlite3_column_text(statement, 2));
        const auto labelSize = static_cast<std::size_t>(sqlite3_column_bytes(statement, 2));
        const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, 3));
        const auto blobSize = sqlite3_column_bytes(statement, 3);
        const SampleRow stored{sqlite3_column_int(statement, 0),
                               sqlite3_column_double(statement, 1),
                               {label, labelSize},
                               {bytes, bytes + blobSize}};
        Require(stored == row, "a row is wrong");
    }
    Require(sqlite3_step(statement) == SQLITE_DONE, "there are too many rows");
    sqlite3_finalize(statement);
    sqlite3_close(handle);
}

} // namespace Morvik::sql::bench
