#include <string>

#include "docs/codes/SituationFacade.h"
#include "support/RawLegacyStatement.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

const std::string Apostrophe = "it's";
const DbTableDefinition OneColumn{"n", {{"a", DbTableColumnType::Integer}}};

/// The result of an operation on a table; its first value says whether the operation succeeded.
template <typename Operation>
Outcome OnTables(SituationFacade& facade, Operation operation, std::optional<RawFailure> plain = std::nullopt)
{
    return Observe(
        facade.database, [&] { return operation(facade.database); }, std::move(plain));
}

Outcome Created(const DbTableDefinition& definition, const std::string& sql)
{
    SituationFacade facade;
    return OnTables(
        facade, [&](DatabaseApi& database) { return database.CreateTable(definition); },
        FailureOfExec(facade.plain.Handle(), sql));
}

Outcome CreatedWithoutItsForeignKey()
{
    SituationFacade facade;
    facade.FailBefore();
    DbTableDefinition definition = OneColumn;
    definition.constraints.foreignKey = {"a"};
    return OnTables(facade, [&](DatabaseApi& database) { return database.CreateTable(definition); });
}

Outcome CreatedOnAReadOnlyDatabase()
{
    SituationFacade facade(false);
    facade.database.OpenDatabase(facade.path, true);
    facade.plain.Execute("PRAGMA query_only = ON");
    return OnTables(
        facade, [](DatabaseApi& database) { return database.CreateTable(OneColumn); },
        FailureOfExec(facade.plain.Handle(), "CREATE TABLE n (a)"));
}

Outcome CreatedOnAClosedDatabase()
{
    SituationFacade facade(false);
    return OnTables(facade, [](DatabaseApi& database) { return database.CreateTable(OneColumn); });
}

Outcome Tested(SituationFacade& facade, const std::string& table, std::optional<RawFailure> plain = std::nullopt)
{
    facade.FailBefore();
    return Observe(
        facade.database,
        [&] {
            int result = -1;
            const bool exists = facade.database.ExistsTable(table, result);
            return ReturnedText(exists) + ", result " + std::to_string(result);
        },
        std::move(plain));
}

Outcome TestedOnAClosedDatabase()
{
    SituationFacade facade(false);
    return Tested(facade, "t", FailureOfPrepare(nullptr, TableExistsQuery("t")));
}

Outcome Dropped(SituationFacade& facade, const std::string& table, std::optional<RawFailure> plain = std::nullopt)
{
    facade.FailBefore();
    return OnTables(
        facade, [&](DatabaseApi& database) { return database.DropTable(table); }, std::move(plain));
}

Outcome DroppedThoughRowsCannotBeDeleted()
{
    SituationFacade facade;
    facade.plain.Execute("CREATE TRIGGER keep BEFORE DELETE ON t BEGIN SELECT RAISE(ABORT, 'kept'); END");
    return Dropped(facade, "t", FailureOfExec(facade.plain.Handle(), "DELETE FROM t"));
}

Outcome DroppedWhileItIsRead()
{
    RawSqlite plain(":memory:");
    plain.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)");
    RawLegacyStatement reading(plain, "SELECT a FROM t");
    reading.Step();
    plain.Execute("DELETE FROM t");
    const RawFailure failure = FailureOfExec(plain.Handle(), "DROP TABLE t");

    SituationFacade facade;
    facade.database.SqlQueryBegin("SELECT a FROM t");
    facade.database.begin();
    return Dropped(facade, "t", failure);
}

Outcome Renamed(SituationFacade& facade, const std::string& table, const std::string& newName)
{
    const std::string sql = "ALTER TABLE " + table + " RENAME TO " + newName;
    Outcome outcome = OnTables(
        facade, [&](DatabaseApi& database) { return database.AlterTable(table, newName); },
        FailureOfExec(facade.plain.Handle(), sql));
    outcome.names["name"] = table;
    return outcome;
}

std::function<Outcome()> Renaming(const std::string& table, const std::string& newName, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        facade.plain.Execute("CREATE TABLE u (a)");
        return Renamed(facade, table, newName);
    };
}

/// The facade has already read the schema, so the query for the table compiles; the lock of another connection makes
/// its step fail.
template <typename Operation>
std::function<Outcome()> WhileTheStepFails(Operation operation)
{
    return [=] {
        SituationFacade facade;
        facade.LockAfterTheSchemaWasRead();
        return operation(facade, "t", std::nullopt);
    };
}

/// Reading the schema fails, so the query for the table does not compile.
template <typename Operation>
std::function<Outcome()> WhileTheFileIsLocked(Operation operation)
{
    return [=] {
        SituationFacade facade;
        const RawSqlite other(facade.path);
        facade.plain.Execute("BEGIN EXCLUSIVE");
        return operation(facade, "t", FailureOfPrepare(other.Handle(), TableExistsQuery("t")));
    };
}

Outcome RenamedBesideALock(SituationFacade& facade, const std::string& table, std::optional<RawFailure>)
{
    Outcome outcome = OnTables(facade, [&](DatabaseApi& database) { return database.AlterTable(table, "n"); });
    outcome.names["name"] = table;
    return outcome;
}

template <typename Operation>
std::function<Outcome()> On(Operation operation, const std::string& table, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        return operation(facade, table, FailureOfPrepare(facade.plain.Handle(), TableExistsQuery(table)));
    };
}

} // namespace

Situations TableSituations()
{
    const std::string create = "IDatabaseApi::CreateTable";
    const std::string exists = "IDatabaseApi::ExistsTable";
    const std::string drop = "IDatabaseApi::DropTable";
    const std::string alter = "IDatabaseApi::AlterTable";
    const DbTableDefinition foreign{"n", OneColumn.columns, {{}, {}, "t", {"a"}}};
    return {
        {create, "the database is closed", CreatedOnAClosedDatabase},
        {create, "the name is empty",
         [] {
             return Created({"", OneColumn.columns}, "SELECT");
         }},
        {create, "there are no columns", [] { return Created({"n"}, "CREATE TABLE n ()"); }},
        {create, "there is a foreign key alone, which is left out", CreatedWithoutItsForeignKey},
        {create, "there is a foreign key that references a table",
         [=] {
             return Created(foreign,
                            "CREATE TABLE n (a INTEGER ,FOREIGN KEY (a) REFERENCES t(a) ON DELETE SET NULL ))");
         }},
        {create, "the database is read only", CreatedOnAReadOnlyDatabase},
        {exists, "there is no such table", On(Tested, "absent")},
        {exists, "the name is empty", On(Tested, "")},
        {exists, "the name holds an apostrophe", On(Tested, Apostrophe)},
        {exists, "the database is closed", TestedOnAClosedDatabase},
        {exists, "the file is locked and its schema was not read", WhileTheFileIsLocked(Tested)},
        {exists, "the test's step fails", WhileTheStepFails(Tested)},
        {drop, "there is no such table", On(Dropped, "absent")},
        {drop, "the database is closed", On(Dropped, "t", false)},
        {drop, "the name is empty", On(Dropped, "")},
        {drop, "the name holds an apostrophe", On(Dropped, Apostrophe)},
        {drop, "the file is locked and its schema was not read", WhileTheFileIsLocked(Dropped)},
        {drop, "the test's step fails", WhileTheStepFails(Dropped)},
        {drop, "the rows cannot be deleted", DroppedThoughRowsCannotBeDeleted},
        {drop, "the emptied table cannot be dropped", DroppedWhileItIsRead},
        {alter, "the database is closed", Renaming("t", "n", false)},
        {alter, "there is no such table", Renaming("absent", "n")},
        {alter, "the name is empty", Renaming("", "n")},
        {alter, "the name holds an apostrophe", Renaming(Apostrophe, "n")},
        {alter, "the file is locked and its schema was not read", WhileTheFileIsLocked(RenamedBesideALock)},
        {alter, "the test's step fails", WhileTheStepFails(RenamedBesideALock)},
        {alter, "the new name is taken", Renaming("t", "u")},
        {alter, "the new name is empty", Renaming("t", "")},
    };
}

} // namespace Morvik::sql::tests
