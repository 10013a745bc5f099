#include "faults/storage/StorageScenario.h"

#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

constexpr const char* EveryRow = "SELECT * FROM reading ORDER BY id";
const DbTableDefinition Event{
    "event", {{"id", DbTableColumnType::Integer, 0, PrimaryKey}, {"what", DbTableColumnType::Text}}, {}};

// Texts so long that a few of them fill a page.
const std::string OldText(700, 'o');
const std::string NewText(700, 'n');

constexpr int FirstNew = 101;
constexpr int CountOfNew = 10;

DbTableDataWrite NewReadings()
{
    DbTableDataWrite data{{"id", "room", "value"}, {}};
    for (int id = FirstNew; id < FirstNew + CountOfNew; ++id) {
        data.rows.push_back({{IntegerCell(id), TextCell(NewText), RealCell(0.5)}});
    }
    return data;
}

std::string InsertOfReadings(int first, int count, const std::string& text)
{
    return "WITH RECURSIVE n(id) AS (SELECT " + std::to_string(first) + " UNION ALL SELECT id + 1 FROM n LIMIT " +
           std::to_string(count) + ") INSERT INTO reading SELECT id, '" + text + "', 0.5 FROM n";
}

// Opens the database with a cache of a few pages, which makes SQLite write into the database before the commit.
StorageSteps OpenWithSmallCache(const std::string& further = {})
{
    return [=](auto& side) {
        side.Open(StorageFile, false);
        return side.Execute("PRAGMA cache_size = 2;" + further);
    };
}

constexpr auto DoNothing = [](auto& /*side*/) { return StepOutcome{.succeeded = true}; };
constexpr auto Open = [](auto& side) { return side.Open(StorageFile, false); };
constexpr auto OpenReadOnly = [](auto& side) { return side.Open(StorageFile, true); };
constexpr auto Close = [](auto& side) { return side.CloseAll(); };
constexpr auto ReadEveryRow = [](auto& side) { return side.Read(EveryRow); };
constexpr auto WriteReadings = [](auto& side) { return side.Write("reading", NewReadings()); };
constexpr auto CreateTable = [](auto& side) { return side.Create(Event); };

std::vector<StorageScenario> MakeScenarios()
{
    const std::string insert = InsertOfReadings(FirstNew, CountOfNew, NewText);
    const std::string transaction =
        "BEGIN;" + insert + ";DELETE FROM reading WHERE id < 10;" + ReferenceCreateStatement(Event) + ";COMMIT";
    const std::string grow = "UPDATE reading SET room = room || id, value = 7";
    const DbTableDataWrite update{{"room"}, {{{TextCell(NewText)}}}};
    return {
        {.name = "OpenNewFile", .act = Open, .prepare = DoNothing, .found = Found::Nothing},
        {.name = "OpenExistingFile", .act = Open, .prepare = DoNothing},
        {.name = "OpenReadOnly", .act = OpenReadOnly, .prepare = DoNothing, .readOnly = true},
        {.name = "CreateFirstTable",
         .act = CreateTable,
         .changes = {ReferenceCreateStatement(Event)},
         .found = Found::Nothing},
        {.name = "CreateTable", .act = CreateTable, .changes = {ReferenceCreateStatement(Event)}},
        {.name = "WriteTableValues", .act = WriteReadings, .changes = {insert}},
        {.name = "UpdateTableValues",
         .act = [=](auto& side) { return side.Update("reading", update, "WHERE id % 3 = 0"); },
         .changes = {"UPDATE reading SET room = '" + NewText + "' WHERE id % 3 = 0"}},
        {.name = "AlterTable",
         .act = [](auto& side) { return side.Alter("reading", "old_reading"); },
         .changes = {"ALTER TABLE reading RENAME TO old_reading"}},
        // If the test for the table cannot read the file, the table counts as absent, and the operation succeeds.
        {.name = "DropTable",
         .act = [](auto& side) { return side.Drop("reading"); },
         .changes = {"DELETE FROM reading", "DROP TABLE reading"},
         .acknowledges = false},
        {.name = "ExecuteTransaction",
         .act = [=](auto& side) { return side.Execute(transaction); },
         .changes = {transaction}},
        {.name = "ExecuteMoreThanTheCacheHolds",
         .act = [=](auto& side) { return side.Execute(grow); },
         .changes = {grow},
         .prepare = OpenWithSmallCache()},
        {.name = "ReadValues", .act = ReadEveryRow, .prepare = OpenReadOnly, .readOnly = true},
        {.name = "WalkByReadNextRow", .act = [](auto& side) { return side.Walk(EveryRow); }},
        {.name = "WalkByIterator", .act = [](auto& side) { return side.Iterate(EveryRow); }},
        {.name = "ExistsTable", .act = [](auto& side) { return side.Exists("reading"); }},
        {.name = "ExistData", .act = [](auto& side) { return side.Count("reading", ""); }},
        {.name = "StepThroughRows",
         .act = [](auto& side) { return side.RunPrepared("SELECT id FROM reading WHERE room > ? ORDER BY id", "a"); }},
        {.name = "StepOfAnInsert",
         .act = [](auto& side) { return side.RunPrepared("INSERT INTO reading (id, room) VALUES (201, ?)", NewText); },
         .changes = {"INSERT INTO reading (id, room) VALUES (201, '" + NewText + "')"}},
        // Closing succeeds even if a call fails; the next connection completes the unfinished work.
        {.name = "CloseAfterAWrite",
         .act = Close,
         .changes = {insert},
         .prepare =
             [](auto& side) {
                 side.Open(StorageFile, false);
                 return WriteReadings(side);
             },
         .canFail = false},
        {.name = "CloseInATransaction", .act = Close, .prepare = OpenWithSmallCache("BEGIN;" + grow), .canFail = false},
        {.name = "ReadAfterAnUnfinishedWrite", .act = ReadEveryRow, .found = Found::Unfinished},
        {.name = "WriteAfterAnUnfinishedWrite", .act = WriteReadings, .changes = {insert}, .found = Found::Unfinished},
    };
}

} // namespace

const std::vector<StorageScenario>& StorageScenarios()
{
    static const std::vector<StorageScenario> scenarios = MakeScenarios();
    return scenarios;
}

DatabaseFiles FoundFiles(Found found, JournalMode mode)
{
    if (found == Found::Nothing) {
        return {};
    }
    const TemporaryDirectory directory;
    const std::string path = directory.File("found.db");
    RawSqlite sqlite(path);
    sqlite.Execute(mode == JournalMode::WriteAheadLog ? "PRAGMA journal_mode = WAL" : "PRAGMA journal_mode = DELETE");
    sqlite.Execute("CREATE TABLE reading (id INTEGER PRIMARY KEY, room TEXT, value REAL);"
                   "CREATE INDEX reading_by_value ON reading (value);" +
                   InsertOfReadings(1, 24, OldText) + "; PRAGMA wal_checkpoint(TRUNCATE)");
    if (found == Found::Database) {
        DatabaseFiles files(path);
        files.contents.erase("-wal"); // an empty file
        return files;
    }
    sqlite.Execute("PRAGMA cache_size = 2; BEGIN; UPDATE reading SET room = room || 'unfinished', value = id");
    return DatabaseFiles(path);
}

std::set<FileCall> NecessaryCalls(const StorageScenario& scenario, JournalMode mode)
{
    using enum FileCall;
    const bool log = mode == JournalMode::WriteAheadLog;
    // A rollback journal is rolled back; a log without a commit is only deleted.
    if (scenario.name == "CloseInATransaction") {
        return log ? std::set{Lock, Unlock, Delete} : std::set{Unlock, FileSize, Read, Write, Sync, Delete};
    }
    // With a rollback journal, nothing is left to do. A log is copied into the database and deleted.
    if (scenario.name == "CloseAfterAWrite") {
        return log ? std::set{Lock, Unlock, FileSize, Read, Write, Truncate, Sync, Delete} : std::set{Unlock};
    }
    // Every scenario reads the database; if it only opens the database, the number of rows is read afterwards.
    std::set<FileCall> calls{FileSize, Read, Lock, Unlock};
    const auto add = [&](bool necessary, const std::set<FileCall>& added) {
        calls.insert(added.begin(), necessary ? added.end() : added.begin());
    };
    add(scenario.name.starts_with("Open"), {FileCall::Open});
    add(!log, {Access});
    add(log, {LockShared});
    // The preparation of this scenario already opens the log.
    add(log && scenario.name != "ExecuteMoreThanTheCacheHolds", {FileCall::Open, Access, MapShared});
    add(log && !scenario.readOnly, {Delete}); // closing deletes the log
    const bool rollsBack = scenario.found == Found::Unfinished && !log;
    const bool writes = rollsBack || !scenario.changes.empty();
    add(rollsBack, {CheckReservedLock});
    add(writes, {Write, Sync, mode == JournalMode::Delete ? Delete : Truncate});
    add(writes && !log, {FileCall::Open}); // the journal
    return calls;
}

} // namespace Morvik::sql::tests
