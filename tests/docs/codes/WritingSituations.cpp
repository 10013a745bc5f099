#include <fstream>
#include <string>

#include "docs/codes/SituationFacade.h"
#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

Outcome Executed(SituationFacade& facade, const std::string& sql)
{
    return Observe(
        facade.database, [&] { return facade.database.Execute(sql); }, FailureOfExec(facade.plain.Handle(), sql));
}

std::function<Outcome()> Executing(const std::string& sql, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        return Executed(facade, sql);
    };
}

Outcome ExecutedWhileAnotherWrites()
{
    SituationFacade facade;
    RawSqlite another(facade.path);
    another.Execute("BEGIN IMMEDIATE");
    return Executed(facade, "INSERT INTO t VALUES (4)");
}

Outcome ExecutedReadOnly()
{
    SituationFacade facade(false);
    facade.database.OpenDatabase(facade.path, true);
    facade.plain.Execute("PRAGMA query_only = ON");
    return Executed(facade, "INSERT INTO t VALUES (4)");
}

Outcome ExecutedOnAFullFile()
{
    SituationFacade facade;
    facade.database.Execute("PRAGMA max_page_count = 1");
    facade.plain.Execute("PRAGMA max_page_count = 1");
    return Executed(facade, "INSERT INTO t VALUES (zeroblob(100000))");
}

Outcome ExecutedOnNoDatabase()
{
    SituationFacade facade(false);
    const std::string path = facade.directory.File("letter.txt");
    std::ofstream(path) << std::string(200, 'x');
    facade.database.OpenDatabase(path, false);
    return Observe(
        facade.database, [&] { return facade.database.Execute("SELECT * FROM t"); },
        FailureOfExec(RawSqlite(path).Handle(), "SELECT * FROM t"));
}

Outcome Written(const std::string& table, const DbTableDataWrite& data, const std::string& sql, bool open = true)
{
    SituationFacade facade(open);
    Outcome outcome = Observe(
        facade.database, [&] { return facade.database.WriteTableValues(table, data); },
        FailureOfExec(facade.plain.Handle(), sql));
    outcome.names = {{"position", "1"}, {"column", "4"}};
    return outcome;
}

std::function<Outcome()> Writing(const std::string& table, const DbTableDataWrite& data, const std::string& sql = "")
{
    return [=] { return Written(table, data, sql); };
}

} // namespace

Situations WritingSituations()
{
    const std::string execute = "IDatabaseApi::Execute";
    const std::string write = "IDatabaseApi::WriteTableValues";
    const DbTableRowValues one{{IntegerCell(1)}};
    const DbTableRowValues invalid{{IntegerCell(1), InvalidCell(4)}};
    return {
        {execute, "the text is empty", Executing("")},
        {execute, "SQLite rejects the text", Executing("nonsense")},
        {execute, "another connection writes to the file", ExecutedWhileAnotherWrites},
        {execute, "the database is read only", ExecutedReadOnly},
        {execute, "the file is full", ExecutedOnAFullFile},
        {execute, "a constraint is violated", Executing("INSERT INTO t VALUES (1)")},
        {execute, "the file is no database", ExecutedOnNoDatabase},
        {execute, "the database is closed", Executing("SELECT 1", false)},
        {write, "the name is empty", Writing("", {{"a"}, {one}})},
        {write, "there are no rows", Writing("t", {{"a"}, {}}, "INSERT INTO t (a) VALUES")},
        {write, "a row has no cells", Writing("t", {{"a"}, {{}}}, "INSERT INTO t (a) VALUES ()")},
        {write, "a row has a cell too many",
         Writing("t", {{"a"}, {{{IntegerCell(7), IntegerCell(8)}}}}, "INSERT INTO t (a) VALUES (7,8)")},
        {write, "a later column name is empty", Writing("t", {{"a", ""}, {one}}, "INSERT INTO t (a,) VALUES (1)")},
        {write, "a cell has no SQL text", Writing("t", {{"a"}, {invalid}}, "INSERT INTO t (a) VALUES (1,)")},
        {write, "a cell has no SQL text and SQLite accepts the statement",
         Writing("t VALUES (7) --", {{"a"}, {invalid}})},
        {write, "a constraint is violated", Writing("t", {{"a"}, {one}}, "INSERT INTO t (a) VALUES (1)")},
        {write, "the database is closed",
         [=] {
             return Written("t", {{"a"}, {one}}, "", false);
         }},
    };
}

} // namespace Morvik::sql::tests
