#include <sqlite3.h>

#include <string>

#include "docs/codes/Situation.h"
#include "support/OomInjector.h"
#include "support/RawLegacyStatement.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

/// Creates a table; `sql` gives SQLite's result.
Run Creating(const DbTableDefinition& definition, const std::string& sql = "", bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        return Observe(facade.database, FailureOfExec(facade.raw.Handle(), sql),
                       [&] { return facade.database.CreateTable(definition); });
    };
}

SituationResult CreatedReadOnly()
{
    SituationFacade facade;
    facade.ReopenReadOnly();
    return Observe(facade.database, FailureOfExec(facade.raw.Handle(), "CREATE TABLE n (a)"), [&] {
        return facade.database.CreateTable({"n", {{"a"}}});
    });
}

/// Runs an operation of the facade on the table of this name. The operation first tests whether the table exists.
using TableOperation = std::function<std::string(DatabaseApi&, const std::string&)>;

std::string Exists(DatabaseApi& database, const std::string& table)
{
    int result = -1;
    const bool exists = database.ExistsTable(table, result);
    return ReturnedText(exists) + ", result " + std::to_string(result);
}

std::string Drop(DatabaseApi& database, const std::string& table)
{
    return ReturnedText(database.DropTable(table));
}

TableOperation RenameTo(const std::string& newName)
{
    return [=](DatabaseApi& database, const std::string& table) {
        return ReturnedText(database.AlterTable(table, newName));
    };
}

TableOperation CountWhere(const std::string& condition)
{
    return [=](DatabaseApi& database, const std::string& table) {
        int result = -1;
        const int count = database.ExistData(table, condition, result);
        return ReturnedText(count) + ", result " + std::to_string(result);
    };
}

SituationResult RanOn(SituationFacade& facade, const TableOperation& operation, const std::string& table,
                      const std::optional<RawFailure>& raw)
{
    SituationResult outcome = Observe(facade.database, raw, [&] { return operation(facade.database, table); });
    outcome.names["name"] = table;
    return outcome;
}

/// Runs the operation on the table t; `arrange` returns SQLite's result in the same situation.
Run OnTheTable(const TableOperation& operation, const std::function<RawFailure(SituationFacade&)>& arrange)
{
    return [=] {
        SituationFacade facade;
        return RanOn(facade, operation, "t", arrange(facade));
    };
}

/// Runs the operation on a table. SQLite's result is that of the query that tests whether the table exists.
Run OnATable(const TableOperation& operation, const std::string& table, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        sqlite3* const handle = open ? facade.raw.Handle() : nullptr;
        return RanOn(facade, operation, table, FailureOfPrepare(handle, TableExistsQuery(table)));
    };
}

/// Reading the schema fails, so the query for the table does not compile.
RawFailure LockTheFile(SituationFacade& facade)
{
    const RawSqlite other(facade.path);
    facade.raw.Execute("BEGIN EXCLUSIVE");
    return FailureOfPrepare(other.Handle(), TableExistsQuery("t"));
}

/// The facade has read the schema, so the query for the table compiles, and its step fails.
RawFailure LockTheFileAfterTheSchemaWasRead(SituationFacade& facade)
{
    facade.database.Execute("SELECT * FROM t");
    facade.FailBefore();
    facade.raw.Execute("BEGIN EXCLUSIVE");
    return {};
}

RawFailure KeepTheRows(SituationFacade& facade)
{
    facade.raw.Execute("CREATE TRIGGER keep BEFORE DELETE ON t BEGIN SELECT RAISE(ABORT, 'kept'); END");
    return FailureOfExec(facade.raw.Handle(), "DELETE FROM t");
}

RawFailure WalkTheTable(SituationFacade& facade)
{
    RawSqlite raw(":memory:");
    raw.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)");
    RawLegacyStatement reading(raw, "SELECT a FROM t");
    reading.Step();
    raw.Execute("DELETE FROM t");
    facade.database.SqlQueryBegin("SELECT a FROM t");
    facade.database.begin();
    return FailureOfExec(raw.Handle(), "DROP TABLE t");
}

RawFailure AddTheTableU(SituationFacade& facade)
{
    facade.raw.Execute("CREATE TABLE u (a)");
    return FailureOfExec(facade.raw.Handle(), "ALTER TABLE t RENAME TO u");
}

RawFailure RenameToNothing(SituationFacade& facade)
{
    return FailureOfExec(facade.raw.Handle(), "ALTER TABLE t RENAME TO ");
}

Run CountingWhere(const std::string& condition, RawFailure (*failure)(sqlite3*, const std::string&))
{
    return OnTheTable(CountWhere(condition), [=](SituationFacade& facade) {
        return failure(facade.raw.Handle(), "SELECT count(*) FROM t " + condition);
    });
}

RawFailure FailureOfFinalize(sqlite3* handle, const std::string& sql)
{
    return LegacyWalk(handle, sql).finalize;
}

std::string CountWithoutMemory(DatabaseApi& database, const std::string& table)
{
    const TableOperation count = CountWhere("");
    const OomInjector failing(0);
    return count(database, table);
}

/// The first call of sqlite3_finalize ends the test for the table, the second call ends the query.
SituationResult CountedWithAFailedClosing()
{
    SituationFacade facade;
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_finalize", SQLITE_IOERR, true, 1);
    return RanOn(facade, CountWhere(""), "t", RawFailure{SQLITE_IOERR, sqlite3_errmsg(facade.raw.Handle())});
}

} // namespace

Situations TableSituations()
{
    const std::string create = "IDatabaseApi::CreateTable";
    const std::string drop = "IDatabaseApi::DropTable";
    const std::string alter = "IDatabaseApi::AlterTable";
    const std::string exist = "IDatabaseApi::ExistData";
    const std::vector<DbTableColumnDefinition> columns{{"a", DbTableColumnType::Integer}};
    const std::string foreign = "CREATE TABLE n (a INTEGER ,FOREIGN KEY (a) REFERENCES t(a) ON DELETE SET NULL ))";
    Situations all{
        {create, "the database is closed", Creating({"n", columns}, "", false)},
        {create, "the name is empty", Creating({"", columns})},
        {create, "there are no columns", Creating({"n"}, "CREATE TABLE n ()")},
        {create, "there is a foreign key alone, which is left out", Creating({"n", columns, {{}, {}, "", {"a"}}})},
        {create, "there is a foreign key that references a table",
         Creating({"n", columns, {{}, {}, "t", {"a"}}}, foreign)},
        {create, "the database is read only", CreatedReadOnly},
        {drop, "the rows cannot be deleted", OnTheTable(Drop, KeepTheRows)},
        {drop, "the emptied table cannot be dropped", OnTheTable(Drop, WalkTheTable)},
        {alter, "the new name is taken", OnTheTable(RenameTo("u"), AddTheTableU)},
        {alter, "the new name is empty", OnTheTable(RenameTo(""), RenameToNothing)},
        {exist, "SQLite rejects the condition", CountingWhere("WHERE absent = 1", FailureOfPrepare)},
        {exist, "the query's step fails", CountingWhere("WHERE abs(-9223372036854775807 - a)", FailureOfFinalize)},
        {exist, "the first cell holds no integer",
         OnATable(CountWhere("WHERE 0 GROUP BY a UNION ALL SELECT 'text'"), "t")},
        {exist, "memory runs out", OnATable(CountWithoutMemory, "t")},
        {exist, "the query's closing fails", CountedWithAFailedClosing},
    };
    const std::map<std::string, TableOperation> operations{
        {"IDatabaseApi::ExistsTable", Exists}, {drop, Drop}, {alter, RenameTo("n")}, {exist, CountWhere("")}};
    for (const auto& [name, operation] : operations) {
        all.push_back({name, "there is no such table", OnATable(operation, "absent")});
        all.push_back({name, "the name is empty", OnATable(operation, "")});
        all.push_back({name, "the name holds an apostrophe", OnATable(operation, "it's")});
        all.push_back({name, "the database is closed", OnATable(operation, "t", false)});
        all.push_back({name, "the file is locked and its schema was not read", OnTheTable(operation, LockTheFile)});
        all.push_back({name, "the test's step fails", OnTheTable(operation, LockTheFileAfterTheSchemaWasRead)});
    }
    return all;
}

} // namespace Morvik::sql::tests
