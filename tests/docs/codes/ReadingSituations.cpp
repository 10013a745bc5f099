#include <string>

#include "docs/codes/Situation.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

/// SQLite's result for the text of a read.
using AskSqlite = RawFailure (*)(sqlite3*, const std::string&);

RawFailure FailureOfStep(sqlite3* handle, const std::string& sql)
{
    return LegacyWalk(handle, sql).step;
}

Run ReadingQuery(const std::string& sql, AskSqlite ask, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        DbTableData data;
        return Observe(facade.database, ask(facade.raw.Handle(), sql),
                       [&] { return facade.database.ReadValues(sql, data); });
    };
}

Run ReadingTable(const std::string& table, AskSqlite ask, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        DbTableData data;
        return Observe(facade.database, ask(facade.raw.Handle(), "SELECT * FROM " + table),
                       [&] { return facade.database.ReadTableValues(table, data); });
    };
}

/// SQLite has no value for a column.
Run WithoutAValue(const Run& reading)
{
    return [=] {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_column_value", 0, false);
        return reading();
    };
}

} // namespace

Situations ReadingSituations()
{
    const std::string table = "IDatabaseApi::ReadTableValues";
    const std::string query = "IDatabaseApi::ReadValues";
    return {
        {table, "the database is closed", ReadingTable("t", FailureOfPrepare, false)},
        {table, "the name is empty", ReadingTable("", FailureOfPrepare)},
        {table, "there is no such table", ReadingTable("absent", FailureOfPrepare)},
        {table, "a step fails", ReadingTable("failing", FailureOfStep)},
        {table, "a row cannot be converted", WithoutAValue(ReadingTable("t", FailureOfPrepare))},
        {query, "the database is closed", ReadingQuery("SELECT 1", FailureOfPrepare, false)},
        {query, "the text is empty", ReadingQuery("", FailureOfPrepare)},
        {query, "SQLite rejects the text", ReadingQuery("nonsense", FailureOfPrepare)},
        {query, "a step fails", ReadingQuery("SELECT * FROM failing", FailureOfStep)},
        {query, "a row cannot be converted", WithoutAValue(ReadingQuery("SELECT a FROM t", FailureOfPrepare))},
    };
}

} // namespace Morvik::sql::tests
