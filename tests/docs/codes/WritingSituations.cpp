#include <fstream>
#include <string>

#include "docs/codes/Situation.h"
#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

SituationResult Executed(SituationFacade& facade, const std::string& sql)
{
    return Observe(facade.database, FailureOfExec(facade.raw.Handle(), sql),
                   [&] { return facade.database.Execute(sql); });
}

Run ExecutingAfter(const std::function<void(SituationFacade&)>& arrange, const std::string& sql, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        arrange(facade);
        return Executed(facade, sql);
    };
}

Run Executing(const std::string& sql, bool open = true)
{
    return ExecutingAfter([](SituationFacade&) {}, sql, open);
}

void FillTheFile(SituationFacade& facade)
{
    facade.database.Execute("PRAGMA max_page_count = 1");
    facade.raw.Execute("PRAGMA max_page_count = 1");
}

SituationResult ExecutedWhileAnotherWrites()
{
    SituationFacade facade;
    RawSqlite another(facade.path);
    another.Execute("BEGIN IMMEDIATE");
    return Executed(facade, "INSERT INTO t VALUES (4)");
}

SituationResult ExecutedOnNoDatabase()
{
    SituationFacade facade(false);
    const std::string path = facade.directory.File("letter.txt");
    std::ofstream(path) << std::string(200, 'x');
    facade.database.OpenDatabase(path, false);
    return Observe(facade.database, FailureOfExec(RawSqlite(path).Handle(), "SELECT * FROM t"),
                   [&] { return facade.database.Execute("SELECT * FROM t"); });
}

/// Writes or updates; `sql` gives SQLite's result. The second cell of the request is invalid; its column is 4.
Run Sending(const std::function<bool(DatabaseApi&)>& request, const std::string& sql, bool open)
{
    return [=] {
        SituationFacade facade(open);
        SituationResult outcome =
            Observe(facade.database, FailureOfExec(facade.raw.Handle(), sql), [&] { return request(facade.database); });
        outcome.names = {{"position", "1"}, {"column", "4"}};
        return outcome;
    };
}

Run Writing(const std::string& table, const DbTableDataWrite& data, const std::string& sql = "", bool open = true)
{
    return Sending([=](DatabaseApi& database) { return database.WriteTableValues(table, data); }, sql, open);
}

Run Updating(const std::string& table, const DbTableDataWrite& data, const std::string& sql = "",
             const std::string& condition = "WHERE a=1", bool open = true)
{
    return Sending([=](DatabaseApi& database) { return database.UpdateTableValues(table, data, condition); }, sql,
                   open);
}

} // namespace

Situations WritingSituations()
{
    const std::string execute = "IDatabaseApi::Execute";
    const std::string write = "IDatabaseApi::WriteTableValues";
    const std::string update = "IDatabaseApi::UpdateTableValues";
    const std::string insertion = "INSERT INTO t VALUES (4)";
    const std::string largeInsertion = "INSERT INTO t VALUES (zeroblob(100000))";
    const DbTableRowValues one{{IntegerCell(1)}};
    const DbTableRowValues two{{IntegerCell(2)}};
    const DbTableRowValues pair{{IntegerCell(7), IntegerCell(8)}};
    const DbTableRowValues invalid{{IntegerCell(1), InvalidCell(4)}};
    return {
        {execute, "the text is empty", Executing("")},
        {execute, "SQLite rejects the text", Executing("nonsense")},
        {execute, "another connection writes to the file", ExecutedWhileAnotherWrites},
        {execute, "the database is read only", ExecutingAfter(&SituationFacade::ReopenReadOnly, insertion)},
        {execute, "the file is full", ExecutingAfter(FillTheFile, largeInsertion)},
        {execute, "a constraint is violated", Executing("INSERT INTO t VALUES (1)")},
        {execute, "the file is no database", ExecutedOnNoDatabase},
        {execute, "the database is closed", Executing("SELECT 1", false)},
        {write, "the name is empty", Writing("", {{"a"}, {one}})},
        {write, "there are no rows", Writing("t", {{"a"}, {}}, "INSERT INTO t (a) VALUES")},
        {write, "a row has no cells", Writing("t", {{"a"}, {{}}}, "INSERT INTO t (a) VALUES ()")},
        {write, "a row has a cell too many", Writing("t", {{"a"}, {pair}}, "INSERT INTO t (a) VALUES (7,8)")},
        {write, "a later column name is empty", Writing("t", {{"a", ""}, {one}}, "INSERT INTO t (a,) VALUES (1)")},
        {write, "a cell has no SQL text", Writing("t", {{"a"}, {invalid}}, "INSERT INTO t (a) VALUES (1,)")},
        {write, "a cell has no SQL text and SQLite accepts the statement",
         Writing("t VALUES (7) --", {{"a"}, {invalid}})},
        {write, "a constraint is violated", Writing("t", {{"a"}, {one}}, "INSERT INTO t (a) VALUES (1)")},
        {write, "the database is closed", Writing("t", {{"a"}, {one}}, "", false)},
        {update, "the name is empty", Updating("", {{"a"}, {two}})},
        {update, "there are no column names", Updating("t", {{}, {two}})},
        {update, "every column name is empty", Updating("t", {{"", ""}, {two}}, "UPDATE t SET=(2) WHERE a=1")},
        {update, "there are no rows", Updating("t", {{"a"}, {}}, "UPDATE t SET (a)=WHERE a=1")},
        {update, "a row has a cell too many", Updating("t", {{"a"}, {pair}}, "UPDATE t SET (a)=(7,8) WHERE a=1")},
        {update, "a cell has no SQL text", Updating("t", {{"a"}, {invalid}}, "UPDATE t SET (a)=(1,) WHERE a=1")},
        {update, "a cell has no SQL text and SQLite accepts the statement",
         Updating("t SET a = a --", {{"a"}, {invalid}})},
        {update, "the condition lacks its keyword", Updating("t", {{"a"}, {two}}, "UPDATE t SET (a)=(2) a=1", "a=1")},
        {update, "a constraint is violated", Updating("t", {{"a"}, {two}}, "UPDATE t SET (a)=(2) WHERE a=1")},
        {update, "the database is closed", Updating("t", {{"a"}, {two}}, "", "", false)},
    };
}

} // namespace Morvik::sql::tests
