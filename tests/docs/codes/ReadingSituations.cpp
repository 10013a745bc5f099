#include <string>

#include "docs/codes/Situation.h"

namespace Morvik::sql::tests {

namespace {

const std::string FailingQuery = "SELECT a FROM failing";

auto Prepare(const std::string& sql)
{
    return [=](DatabaseApi& database) {
        const CodeAndMessage error = ErrorOf(database.PrepareStatement(sql));
        return "a command with code " + std::to_string(error.code) + " and " +
               (error.message.empty() ? "no message" : error.message);
    };
}

RawFailure FailAStep(SituationFacade& facade)
{
    Read(FailingQuery)(facade.database);
    return FailureOfFinalize(facade.raw.Handle(), FailingQuery);
}

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

/// Begins the query, calls `prepare` and fetches the first row of `sql`. For a fetch that advances an iterator, the
/// query gets a row before the rows of `sql`, and the iterator begins on that row.
Run Fetching(const Fetch& fetch, const std::string& sql, const std::function<void(SituationFacade&)>& prepare = Nothing)
{
    return [=] {
        SituationFacade facade;
        const std::string query = fetch.advances ? "SELECT 0 UNION ALL " + sql : sql;
        const RawFailure raw = FailureOfStep(facade.raw.Handle(), query);
        facade.database.SqlQueryBegin(query);
        DbTableRowIterator row = fetch.advances ? facade.database.begin() : facade.database.end();
        prepare(facade);
        return Observe(facade.database, raw, [&] { return fetch.run(facade.database, row); });
    };
}

Run FetchingNull(Fetch fetch, const std::string& function)
{
    fetch.run = WithNull(function, fetch.run);
    return Fetching(fetch, "SELECT 1");
}

} // namespace

Situations ReadingSituations()
{
    const std::string table = "IDatabaseApi::ReadTableValues";
    const std::string query = "IDatabaseApi::ReadValues";
    const std::string begin = "DatabaseApi::SqlQueryBegin";
    const std::string close = "DatabaseApi::CloseReadTable";
    const std::string prepare = "DatabaseApi::PrepareStatement";
    const std::string noValue = "sqlite3_column_value";
    Situations all{
        {table, "the database is closed", OnAFacade(Closed, ReadTable("t"))},
        {table, "the name is empty", OnAFacade(Raw(FailureOfPrepare, "SELECT * FROM "), ReadTable(""))},
        {table, "there is no such table",
         OnAFacade(Raw(FailureOfPrepare, "SELECT * FROM absent"), ReadTable("absent"))},
        {table, "a step fails", OnAFacade(Raw(FailureOfStep, "SELECT * FROM failing"), ReadTable("failing"))},
        {table, "a row cannot be converted", OnAFacade(Nothing, WithNull(noValue, ReadTable("t")))},
        {query, "the database is closed", OnAFacade(Closed, Read("SELECT 1"))},
        {query, "the text is empty", OnAFacade(Nothing, Read(""))},
        {query, "SQLite rejects the text", OnAFacade(Raw(FailureOfPrepare, "nonsense"), Read("nonsense"))},
        {query, "a step fails", OnAFacade(Raw(FailureOfStep, FailingQuery), Read(FailingQuery))},
        {query, "a row cannot be converted", OnAFacade(Nothing, WithNull(noValue, Read("SELECT a FROM t")))},
        {begin, "the database is closed", OnAFacade(Closed, Begin("SELECT 1"))},
        {begin, "the text is empty", OnAFacade(Nothing, Begin(""))},
        {begin, "SQLite rejects the text", OnAFacade(Raw(FailureOfPrepare, "nonsense"), Begin("nonsense"))},
        {close, "no query is held", OnAFacade(Nothing, &DatabaseApi::CloseReadTable)},
        {close, "the last step failed", OnAFacade(FailAStep, &DatabaseApi::CloseReadTable)},
        {prepare, "SQLite rejects the text", OnAFacade(Nothing, Prepare("nonsense"))},
        {prepare, "the database is closed", OnAFacade(Closed, Prepare("SELECT 1"))},
    };
    for (const Fetch& fetch : Fetches) {
        const std::string failing = "SELECT abs(-9223372036854775807 + 1 - a) FROM t WHERE a = 2";
        const auto closeQuery = [](SituationFacade& facade) { facade.database.CloseReadTable(); };
        all.push_back({fetch.name, "the rows are at their end", Fetching(fetch, "SELECT 1 WHERE 0")});
        all.push_back({fetch.name, "the step fails", Fetching(fetch, failing)});
        all.push_back({fetch.name, "a column has no value", FetchingNull(fetch, noValue)});
        all.push_back({fetch.name, "a column's type is unknown", FetchingNull(fetch, "sqlite3_value_type")});
        all.push_back({fetch.name, fetch.advances ? "the query was closed meanwhile" : "no query is held",
                       Fetching(fetch, "SELECT 1", closeQuery)});
        if (!fetch.advances) {
            all.push_back({fetch.name, "another operation's failure is on record",
                           Fetching(fetch, "SELECT 1", &SituationFacade::FailBefore)});
        }
    }
    return all;
}

} // namespace Morvik::sql::tests
