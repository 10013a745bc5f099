#include "faults/storage/StorageScenario.h"

#include <sstream>
#include <stdexcept>

#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

using Found = StorageScenario::Found;

constexpr const char* EveryRow = "SELECT * FROM reading ORDER BY id";

void OpenForWriting(StorageSide& side, const std::string& path)
{
    if (!side.Open(path, false).succeeded) {
        throw std::runtime_error("cannot open " + path);
    }
}

void OpenForReading(StorageSide& side, const std::string& path)
{
    if (!side.Open(path, true).succeeded) {
        throw std::runtime_error("cannot open " + path);
    }
}

void OpenNothing(StorageSide& /*side*/, const std::string& /*path*/) {}

DbTableDefinition Definition()
{
    DbTableDefinition definition;
    definition.name = "event";
    definition.columns.resize(2);
    definition.columns[0].name = "id";
    definition.columns[0].type = DbTableColumnType::Integer;
    definition.columns[0].constraintFlags = DbTableColumnConstraint::PrimaryKey;
    definition.columns[1].name = "what";
    definition.columns[1].type = DbTableColumnType::Text;
    return definition;
}

constexpr const char* CreateEvent = "CREATE TABLE event (id INTEGER PRIMARY KEY,what TEXT)";

DbTableDataWrite NewReadings()
{
    DbTableDataWrite data;
    data.columns = {"id", "room", "value"};
    for (int id = 101; id <= 110; ++id) {
        data.rows.push_back({{IntegerCell(id), TextCell(LongText('n')), RealCell(0.5)}});
    }
    return data;
}

std::string InsertOfNewReadings()
{
    std::ostringstream sql;
    sql << "INSERT INTO reading (id, room, value) VALUES ";
    for (int id = 101; id <= 110; ++id) {
        sql << (id == 101 ? "" : ",") << '(' << id << ",'" << LongText('n') << "',0.5)";
    }
    return sql.str();
}

std::vector<StorageScenario> MakeScenarios()
{
    using Side = StorageSide;
    using Path = const std::string;
    std::vector<StorageScenario> scenarios;

    scenarios.push_back({.name = "OpenNewFile",
                         .prepare = OpenNothing,
                         .act = [](Side& side, Path& path) { return side.Open(path, false); },
                         .found = Found::Nothing});
    scenarios.push_back({.name = "OpenExistingFile", .prepare = OpenNothing, .act = [](Side& side, Path& path) {
                             return side.Open(path, false);
                         }});
    scenarios.push_back({.name = "OpenReadOnly",
                         .prepare = OpenNothing,
                         .act = [](Side& side, Path& path) { return side.Open(path, true); },
                         .readOnly = true});
    scenarios.push_back({.name = "CreateFirstTable",
                         .prepare = OpenForWriting,
                         .act = [](Side& side, Path&) { return side.Create(Definition()); },
                         .changes = {CreateEvent},
                         .found = Found::Nothing});
    scenarios.push_back({.name = "CreateTable",
                         .prepare = OpenForWriting,
                         .act = [](Side& side, Path&) { return side.Create(Definition()); },
                         .changes = {CreateEvent}});
    scenarios.push_back({.name = "WriteTableValues",
                         .prepare = OpenForWriting,
                         .act = [](Side& side, Path&) { return side.Write("reading", NewReadings()); },
                         .changes = {InsertOfNewReadings()}});
    scenarios.push_back(
        {.name = "UpdateTableValues",
         .prepare = OpenForWriting,
         .act =
             [](Side& side, Path&) {
                 return side.Update("reading", {{"room"}, {{{TextCell(LongText('u'))}}}}, "WHERE id % 3 = 0");
             },
         .changes = {"UPDATE reading SET room = '" + LongText('u') + "' WHERE id % 3 = 0"}});
    scenarios.push_back({.name = "AlterTable",
                         .prepare = OpenForWriting,
                         .act = [](Side& side, Path&) { return side.Alter("reading", "old_reading"); },
                         .changes = {"ALTER TABLE reading RENAME TO old_reading"}});
    // If the test for the table cannot read the file, the table counts as absent, and the operation succeeds
    // (TestForTableTest).
    scenarios.push_back({.name = "DropTable",
                         .prepare = OpenForWriting,
                         .act = [](Side& side, Path&) { return side.Drop("reading"); },
                         .changes = {"DELETE FROM reading", "DROP TABLE reading"},
                         .acknowledges = false});
    scenarios.push_back({.name = "ExecuteTransaction",
                         .prepare = OpenForWriting,
                         .act =
                             [](Side& side, Path&) {
                                 return side.Execute("BEGIN;" + InsertOfNewReadings() +
                                                     ";DELETE FROM reading WHERE id < 10;" + CreateEvent + ";COMMIT");
                             },
                         .changes = {"BEGIN;" + InsertOfNewReadings() + ";DELETE FROM reading WHERE id < 10;" +
                                     CreateEvent + ";COMMIT"}});
    // A cache of a few pages makes SQLite write into the database before the commit.
    scenarios.push_back(
        {.name = "ExecuteMoreThanTheCacheHolds",
         .prepare =
             [](Side& side, Path& path) {
                 OpenForWriting(side, path);
                 side.Execute("PRAGMA cache_size = 2");
             },
         .act = [](Side& side, Path&) { return side.Execute("UPDATE reading SET room = room || id, value = 7"); },
         .changes = {"UPDATE reading SET room = room || id, value = 7"}});
    scenarios.push_back({.name = "ReadValues",
                         .prepare = OpenForReading,
                         .act = [](Side& side, Path&) { return side.Read(EveryRow); },
                         .readOnly = true});
    scenarios.push_back({.name = "WalkByReadNextRow", .prepare = OpenForWriting, .act = [](Side& side, Path&) {
                             return side.Walk(EveryRow);
                         }});
    scenarios.push_back({.name = "WalkByIterator", .prepare = OpenForWriting, .act = [](Side& side, Path&) {
                             return side.Iterate(EveryRow);
                         }});
    scenarios.push_back({.name = "ExistsTable", .prepare = OpenForWriting, .act = [](Side& side, Path&) {
                             return side.Exists("reading");
                         }});
    scenarios.push_back({.name = "ExistData", .prepare = OpenForWriting, .act = [](Side& side, Path&) {
                             return side.Count("reading");
                         }});
    scenarios.push_back({.name = "StepThroughRows", .prepare = OpenForWriting, .act = [](Side& side, Path&) {
                             return side.RunPrepared("SELECT id FROM reading WHERE room > ? ORDER BY id", "a");
                         }});
    scenarios.push_back(
        {.name = "StepOfAnInsert",
         .prepare = OpenForWriting,
         .act = [](Side& side,
                   Path&) { return side.RunPrepared("INSERT INTO reading (id, room) VALUES (201, ?)", LongText('p')); },
         .changes = {"INSERT INTO reading (id, room) VALUES (201, '" + LongText('p') + "')"}});
    // Closing succeeds even if a call fails; the next connection finishes what is left to do.
    scenarios.push_back({.name = "CloseAfterAWrite",
                         .prepare =
                             [](Side& side, Path& path) {
                                 OpenForWriting(side, path);
                                 side.Write("reading", NewReadings());
                             },
                         .act = [](Side& side, Path&) { return side.Close(); },
                         .changes = {InsertOfNewReadings()},
                         .canFail = false});
    scenarios.push_back({.name = "CloseInATransaction",
                         .prepare =
                             [](Side& side, Path& path) {
                                 OpenForWriting(side, path);
                                 side.Execute("PRAGMA cache_size = 2;"
                                              "BEGIN; UPDATE reading SET room = room || id, value = 7");
                             },
                         .act = [](Side& side, Path&) { return side.Close(); },
                         .canFail = false});
    scenarios.push_back({.name = "ReadAfterAnUnfinishedWrite",
                         .prepare = OpenForWriting,
                         .act = [](Side& side, Path&) { return side.Read(EveryRow); },
                         .found = Found::Unfinished});
    scenarios.push_back({.name = "WriteAfterAnUnfinishedWrite",
                         .prepare = OpenForWriting,
                         .act = [](Side& side, Path&) { return side.Write("reading", NewReadings()); },
                         .changes = {InsertOfNewReadings()},
                         .found = Found::Unfinished});
    return scenarios;
}

} // namespace

const std::vector<StorageScenario>& StorageScenarios()
{
    static const std::vector<StorageScenario> scenarios = MakeScenarios();
    return scenarios;
}

} // namespace Morvik::sql::tests
