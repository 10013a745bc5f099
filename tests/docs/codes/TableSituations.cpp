#include <string>

#include <sqlite3.h>

#include "docs/codes/Situation.h"
#include "support/OomInjector.h"
#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

namespace {

/// Creates a table. SQLite's result is that of `sql`.
Run Creating(const DbTableDefinition& definition, const std::string& sql = "", const Arrange& arrange = Nothing)
{
    return OnAFacade(Raw(FailureOfExec, sql, arrange), CreateTable(definition));
}

/// Calls a member function that also returns a result through its last parameter.
template <auto Function>
constexpr auto CallWithResult = [](auto... arguments) {
    return [=](DatabaseApi& database) {
        int result = -1;
        const auto returned = std::invoke(Function, database, arguments..., result);
        return ReturnedText(returned) + ", result " + std::to_string(result);
    };
};

constexpr auto Exists = CallWithResult<&DatabaseApi::ExistsTable>;
constexpr auto Count = CallWithResult<&DatabaseApi::ExistData>;

std::string CountWithoutMemory(DatabaseApi& database)
{
    const auto count = Count("t", "");
    const OomInjector failing(0);
    return count(database);
}

/// Reading the schema fails, so the query for the table does not compile.
RawFailure LockTheFile(SituationFacade& facade)
{
    facade.raw.Execute("BEGIN EXCLUSIVE");
    return FailureOfPrepare(RawSqlite(facade.path).Handle(), TableExistsQuery("t"));
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
    RawLegacyStatement reading(raw.Handle(), "SELECT a FROM t");
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

/// The first call of sqlite3_finalize ends the test for the table, the second call ends the query.
SituationResult CountedWithAFailedClosing()
{
    SituationFacade facade;
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_finalize", SQLITE_IOERR, true, 1);
    return Observe(facade.database, RawFailure{SQLITE_IOERR, sqlite3_errmsg(facade.raw.Handle())},
                   [&] { return Count("t", "")(facade.database); });
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
    const std::string absent = "WHERE absent = 1";
    const std::string overflow = "WHERE abs(-9223372036854775807 - a)";
    const std::string count = "SELECT count(*) FROM t ";
    Situations all{
        {create, "the database is closed", Creating({"n", columns}, "", Closed)},
        {create, "the name is empty", Creating({"", columns})},
        {create, "there are no columns", Creating({"n"}, "CREATE TABLE n ()")},
        {create, "there is a foreign key alone, which is left out", Creating({"n", columns, {{}, {}, "", {"a"}}})},
        {create, "there is a foreign key that references a table",
         Creating({"n", columns, {{}, {}, "t", {"a"}}}, foreign)},
        {create, "the database is read only", Creating({"n", columns}, "CREATE TABLE n (a)", ReadOnly)},
        {drop, "the rows cannot be deleted", OnAFacade(KeepTheRows, DropTable("t"))},
        {drop, "the emptied table cannot be dropped", OnAFacade(WalkTheTable, DropTable("t"))},
        {alter, "the new name is taken", OnAFacade(AddTheTableU, AlterTable("t", "u"))},
        {alter, "the new name is empty",
         OnAFacade(Raw(FailureOfExec, "ALTER TABLE t RENAME TO "), AlterTable("t", ""))},
        {exist, "SQLite rejects the condition", OnAFacade(Raw(FailureOfPrepare, count + absent), Count("t", absent))},
        {exist, "the query's step fails", OnAFacade(Raw(FailureOfFinalize, count + overflow), Count("t", overflow))},
        {exist, "the first cell holds no integer",
         OnAFacade(Nothing, Count("t", "WHERE 0 GROUP BY a UNION ALL SELECT 'text'"))},
        {exist, "memory runs out", OnAFacade(Nothing, CountWithoutMemory)},
        {exist, "the query's closing fails", CountedWithAFailedClosing},
    };
    const auto add = [&all](const std::string& name, const auto& operationOn) {
        const auto addWith = [&](const char* situation, const std::string& table, const Arrange& arrange) {
            const Run run = OnAFacade(arrange, operationOn(table));
            all.push_back({name, situation, [=] {
                               SituationResult outcome = run();
                               outcome.names["name"] = table;
                               return outcome;
                           }});
        };
        addWith("there is no such table", "absent", Nothing);
        addWith("the name is empty", "", Nothing);
        addWith("the name holds an apostrophe", "it's", Raw(FailureOfPrepare, TableExistsQuery("it's")));
        addWith("the database is closed", "t", Closed);
        addWith("the file is locked and its schema was not read", "t", LockTheFile);
        addWith("the test's step fails", "t", LockTheFileAfterTheSchemaWasRead);
    };
    add("IDatabaseApi::ExistsTable", Exists);
    add(drop, DropTable);
    add(alter, [](const std::string& table) { return AlterTable(table, "n"); });
    add(exist, [](const std::string& table) { return Count(table, ""); });
    return all;
}

} // namespace Morvik::sql::tests
