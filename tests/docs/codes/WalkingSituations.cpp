#include <string>

#include "docs/codes/Situation.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string Failing = "SELECT a FROM failing";

/// One of the three operations that fetch a row, and the rows that it must have fetched before.
struct Fetch {
    std::string name;
    bool advances;
    std::function<std::string(DatabaseApi&, DbTableRowIterator&)> run;
};

std::string EndOrRow(bool atEnd)
{
    return atEnd ? "the end" : "a row";
}

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

Outcome Fetched(SituationFacade& facade, const Fetch& fetch, std::optional<RawFailure> raw = std::nullopt)
{
    DbTableRowIterator row = fetch.advances ? facade.database.begin() : facade.database.end();
    return Observe(facade.database, std::move(raw), [&] { return fetch.run(facade.database, row); });
}

Run AtTheEnd(const Fetch& fetch)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin(fetch.advances ? "SELECT 1" : "SELECT 1 WHERE 0");
        return Fetched(facade, fetch);
    };
}

Run WithAFailingStep(const Fetch& fetch)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin(Failing);
        if (!fetch.advances) {
            facade.database.begin();
        }
        return Fetched(facade, fetch, LegacyWalk(facade.raw.Handle(), Failing).step);
    };
}

/// Replaces the result of reading the column: no value at all, or a storage class that does not exist.
Run WithABadColumn(const Fetch& fetch, const std::string& function)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin("SELECT a FROM t");
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(function, 0, false, fetch.advances ? 1 : 0);
        return Fetched(facade, fetch);
    };
}

Run WithoutAQuery(const Fetch& fetch)
{
    return [=] {
        SituationFacade facade;
        return Fetched(facade, fetch);
    };
}

Run AfterAnotherFailure(const Fetch& fetch)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin("SELECT a FROM t");
        facade.FailBefore();
        return Fetched(facade, fetch);
    };
}

Outcome AdvancedAfterClosing()
{
    SituationFacade facade;
    facade.database.SqlQueryBegin("SELECT a FROM t");
    DbTableRowIterator row = facade.database.begin();
    facade.database.CloseReadTable();
    return Observe(facade.database, std::nullopt, [&] { return EndOrRow(++row == facade.database.end()); });
}

Run Beginning(const std::string& sql, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        return Observe(facade.database, FailureOfPrepare(facade.raw.Handle(), sql),
                       [&] { return facade.database.SqlQueryBegin(sql); });
    };
}

Outcome ClosedWithoutAQuery()
{
    SituationFacade facade;
    return Observe(facade.database, std::nullopt, [&] { return facade.database.CloseReadTable(); });
}

Outcome ClosedAfterAFailedStep()
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

Situations WalkingSituations()
{
    Situations all{
        {"DatabaseApi::SqlQueryBegin", "the database is closed", Beginning("SELECT 1", false)},
        {"DatabaseApi::SqlQueryBegin", "the text is empty", Beginning("")},
        {"DatabaseApi::SqlQueryBegin", "SQLite rejects the text", Beginning("nonsense")},
        {"DatabaseApi::CloseReadTable", "no query is held", ClosedWithoutAQuery},
        {"DatabaseApi::CloseReadTable", "the last step failed", ClosedAfterAFailedStep},
        {"DatabaseApi::PrepareStatement", "SQLite rejects the text", PreparingACommand("nonsense")},
        {"DatabaseApi::PrepareStatement", "the database is closed", PreparingACommand("SELECT 1", false)},
        {"DbTableRowIterator::operator++", "the query was closed meanwhile", AdvancedAfterClosing},
    };
    for (const Fetch& fetch : Fetches) {
        all.push_back({fetch.name, "the rows are at their end", AtTheEnd(fetch)});
        all.push_back({fetch.name, "the step fails", WithAFailingStep(fetch)});
        all.push_back({fetch.name, "a column has no value", WithABadColumn(fetch, "sqlite3_column_value")});
        all.push_back({fetch.name, "a column's type is unknown", WithABadColumn(fetch, "sqlite3_value_type")});
        if (!fetch.advances) {
            all.push_back({fetch.name, "no query is held", WithoutAQuery(fetch)});
            all.push_back({fetch.name, "another operation's failure is on record", AfterAnotherFailure(fetch)});
        }
    }
    return all;
}

} // namespace Morvik::sql::tests
