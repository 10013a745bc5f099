#include <string>

#include "docs/codes/SituationFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string Next = "DatabaseApi::ReadNextRow";
const std::string Begin = "DatabaseApi::begin";
const std::string Advance = "DbTableRowIterator::operator++";

/// Fetches a row with one of the three operations; the last operation first fetches another row.
Outcome Fetched(DatabaseApi& database, const std::string& operation, std::optional<RawFailure> plain = std::nullopt)
{
    if (operation == Next) {
        return Observe(
            database,
            [&] {
                DbTableRowValues row;
                return database.ReadNextRow(row);
            },
            std::move(plain));
    }
    DbTableRowIterator row = operation == Begin ? database.end() : database.begin();
    return Observe(
        database,
        [&] {
            const DbTableRowIterator now = operation == Begin ? database.begin() : ++row;
            return std::string(now == database.end() ? "the end" : "a row");
        },
        std::move(plain));
}

std::function<Outcome()> WithoutAQuery(const std::string& operation)
{
    return [=] {
        SituationFacade facade;
        return Fetched(facade.database, operation);
    };
}

std::function<Outcome()> AtTheEnd(const std::string& operation)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin(operation == Advance ? "SELECT 1" : "SELECT 1 WHERE 0");
        return Fetched(facade.database, operation);
    };
}

std::function<Outcome()> WithAFailingStep(const std::string& operation)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin("SELECT a FROM failing");
        if (operation != Advance) {
            facade.database.begin();
        }
        return Fetched(facade.database, operation, LegacyWalk(facade.plain.Handle(), "SELECT a FROM failing").step);
    };
}

/// Replaces the result of reading the column: no value at all, or a storage class that does not exist.
std::function<Outcome()> WithABadColumn(const std::string& operation, const std::string& function)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin("SELECT a FROM t");
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(function, 0, false, operation == Advance ? 1 : 0);
        return Fetched(facade.database, operation);
    };
}

std::function<Outcome()> AfterAnotherFailure(const std::string& operation)
{
    return [=] {
        SituationFacade facade;
        facade.database.SqlQueryBegin("SELECT a FROM t");
        facade.FailBefore();
        return Fetched(facade.database, operation);
    };
}

Outcome AdvancedAfterClosing()
{
    SituationFacade facade;
    facade.database.SqlQueryBegin("SELECT a FROM t");
    DbTableRowIterator row = facade.database.begin();
    facade.database.CloseReadTable();
    return Observe(facade.database, [&] { return std::string(++row == facade.database.end() ? "the end" : "a row"); });
}

std::function<Outcome()> Beginning(const std::string& sql, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        return Observe(
            facade.database, [&] { return facade.database.SqlQueryBegin(sql); },
            FailureOfPrepare(facade.plain.Handle(), sql));
    };
}

Outcome ClosedWithoutAQuery()
{
    SituationFacade facade;
    facade.FailBefore();
    return Observe(facade.database, [&] { return facade.database.CloseReadTable(); });
}

Outcome ClosedAfterAFailedStep()
{
    SituationFacade facade;
    const std::string sql = "SELECT a FROM failing";
    DbTableData data;
    facade.database.ReadValues(sql, data);
    return Observe(
        facade.database, [&] { return facade.database.CloseReadTable(); },
        LegacyWalk(facade.plain.Handle(), sql).finalize);
}

std::function<Outcome()> Preparing(const std::string& sql, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        facade.FailBefore();
        return Observe(facade.database, [&] {
            const SqlCommand command = facade.database.PrepareStatement(sql);
            return "a command with code " + std::to_string(command.GetLastError()) + " and " +
                   (command.GetLastErrorMsg().empty() ? "no message" : command.GetLastErrorMsg());
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
        {"DatabaseApi::PrepareStatement", "SQLite rejects the text", Preparing("nonsense")},
        {"DatabaseApi::PrepareStatement", "the database is closed", Preparing("SELECT 1", false)},
        {Advance, "the query was closed meanwhile", AdvancedAfterClosing},
    };
    for (const std::string& operation : {Next, Begin, Advance}) {
        all.push_back({operation, "the rows are at their end", AtTheEnd(operation)});
        all.push_back({operation, "the step fails", WithAFailingStep(operation)});
        all.push_back({operation, "a column has no value", WithABadColumn(operation, "sqlite3_column_value")});
        all.push_back({operation, "a column's type is unknown", WithABadColumn(operation, "sqlite3_value_type")});
    }
    for (const std::string& operation : {Next, Begin}) {
        all.push_back({operation, "no query is held", WithoutAQuery(operation)});
        all.push_back({operation, "another operation's failure is on record", AfterAnotherFailure(operation)});
    }
    return all;
}

} // namespace Morvik::sql::tests
