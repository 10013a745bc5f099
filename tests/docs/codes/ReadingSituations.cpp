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

const std::string Failing = "SELECT a FROM failing";

std::string EndOrRow(bool atEnd)
{
    return atEnd ? "the end" : "a row";
}

/// One of the operations that fetch a row. If it advances an iterator, the iterator must already be on a row.
struct Fetch {
    std::string name;
    bool advances;
    std::function<std::string(DatabaseApi&, DbTableRowIterator&)> run;
};

const std::vector<Fetch> Fetches{
    {"DatabaseApi::ReadNextRow", false,
     [](DatabaseApi& database, DbTableRowIterator&) {
         DbTableRowValues row;
         return ReturnedText(database.ReadNextRow(row));
     }},
    {"DatabaseApi::begin", false,
     [](DatabaseApi& database, DbTableRowIterator&) { return EndOrRow(database.begin() == database.end()); }},
    {"DbTableRowIterator::operator++", true,
     [](DatabaseApi& database, DbTableRowIterator& row) { return EndOrRow(++row == database.end()); }},
};

/// Begins the query, calls `prepare` and fetches the first row of `sql`. An iterator is on an added row before that.
Run Fetching(const Fetch& fetch, const std::string& sql,
             const std::function<void(SituationFacade&, SqliteCallRecorder&)>& prepare)
{
    return [=] {
        SituationFacade facade;
        const std::string query = fetch.advances ? "SELECT 0 UNION ALL " + sql : sql;
        const RawFailure raw = LegacyWalk(facade.raw.Handle(), query).step;
        facade.database.SqlQueryBegin(query);
        DbTableRowIterator row = fetch.advances ? facade.database.begin() : facade.database.end();
        SqliteCallRecorder sqlite;
        prepare(facade, sqlite);
        return Observe(facade.database, raw, [&] { return fetch.run(facade.database, row); });
    };
}

Run Beginning(const std::string& sql, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        return Observe(facade.database, FailureOfPrepare(facade.raw.Handle(), sql),
                       [&] { return facade.database.SqlQueryBegin(sql); });
    };
}

SituationResult ClosedWithoutAQuery()
{
    SituationFacade facade;
    return Observe(facade.database, std::nullopt, [&] { return facade.database.CloseReadTable(); });
}

SituationResult ClosedAfterAFailedStep()
{
    SituationFacade facade;
    DbTableData data;
    facade.database.ReadValues(Failing, data);
    return Observe(facade.database, LegacyWalk(facade.raw.Handle(), Failing).finalize,
                   [&] { return facade.database.CloseReadTable(); });
}

Run PreparingACommand(const std::string& sql, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        return Observe(facade.database, std::nullopt, [&] {
            const CodeAndMessage error = ErrorOf(facade.database.PrepareStatement(sql));
            return "a command with code " + std::to_string(error.code) + " and " +
                   (error.message.empty() ? "no message" : error.message);
        });
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

Situations WalkingSituations()
{
    const auto nothing = [](SituationFacade&, SqliteCallRecorder&) {};
    const auto noValue = [](SituationFacade&, SqliteCallRecorder& sqlite) {
        sqlite.ReplaceNextResult("sqlite3_column_value", 0, false);
    };
    const auto unknownType = [](SituationFacade&, SqliteCallRecorder& sqlite) {
        sqlite.ReplaceNextResult("sqlite3_value_type", 0, false);
    };
    const auto close = [](SituationFacade& facade, SqliteCallRecorder&) { facade.database.CloseReadTable(); };
    const auto fail = [](SituationFacade& facade, SqliteCallRecorder&) { facade.FailBefore(); };
    Situations all{
        {"DatabaseApi::SqlQueryBegin", "the database is closed", Beginning("SELECT 1", false)},
        {"DatabaseApi::SqlQueryBegin", "the text is empty", Beginning("")},
        {"DatabaseApi::SqlQueryBegin", "SQLite rejects the text", Beginning("nonsense")},
        {"DatabaseApi::CloseReadTable", "no query is held", ClosedWithoutAQuery},
        {"DatabaseApi::CloseReadTable", "the last step failed", ClosedAfterAFailedStep},
        {"DatabaseApi::PrepareStatement", "SQLite rejects the text", PreparingACommand("nonsense")},
        {"DatabaseApi::PrepareStatement", "the database is closed", PreparingACommand("SELECT 1", false)},
    };
    for (const Fetch& fetch : Fetches) {
        const std::string failing = "SELECT abs(-9223372036854775807 + 1 - a) FROM t WHERE a = 2";
        all.push_back({fetch.name, "the rows are at their end", Fetching(fetch, "SELECT 1 WHERE 0", nothing)});
        all.push_back({fetch.name, "the step fails", Fetching(fetch, failing, nothing)});
        all.push_back({fetch.name, "a column has no value", Fetching(fetch, "SELECT 1", noValue)});
        all.push_back({fetch.name, "a column's type is unknown", Fetching(fetch, "SELECT 1", unknownType)});
        all.push_back({fetch.name, fetch.advances ? "the query was closed meanwhile" : "no query is held",
                       Fetching(fetch, "SELECT 1", close)});
        if (!fetch.advances) {
            all.push_back({fetch.name, "another operation's failure is on record", Fetching(fetch, "SELECT 1", fail)});
        }
    }
    return all;
}

} // namespace Morvik::sql::tests
