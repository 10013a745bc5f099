#include "faults/storage/StorageScenario.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

using Found = StorageScenario::Found;

constexpr int Rows = 24;

} // namespace

DatabaseFiles FoundFiles(Found found, JournalMode mode)
{
    if (found == Found::Nothing) {
        return {};
    }
    const FaultInjectionVfs withoutAFault; // does not wait for the disk
    const TemporaryDirectory directory;
    const std::string path = directory.File("found.db");
    RawSqlite plain(path);
    plain.Execute(mode == JournalMode::WriteAheadLog ? "PRAGMA journal_mode = WAL" : "PRAGMA journal_mode = DELETE");
    plain.Execute("CREATE TABLE reading (id INTEGER PRIMARY KEY, room TEXT, value REAL);"
                  "CREATE INDEX reading_by_value ON reading (value)");
    plain.Execute("BEGIN");
    for (int id = 1; id <= Rows; ++id) {
        plain.Execute("INSERT INTO reading VALUES (" + std::to_string(id) + ", '" + LongText('e') + "', 1.5)");
    }
    plain.Execute("COMMIT");
    plain.Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    if (found == Found::Database) {
        DatabaseFiles files(path);
        files.contents.erase("-wal"); // is empty
        return files;
    }
    plain.Execute("PRAGMA cache_size = 2; BEGIN; UPDATE reading SET room = room || 'unfinished', value = id");
    return DatabaseFiles(path);
}

} // namespace Morvik::sql::tests
