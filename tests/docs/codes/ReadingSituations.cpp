#include <string>

#include "docs/codes/SituationFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string ReadTable = "IDatabaseApi::ReadTableValues";
const std::string Read = "IDatabaseApi::ReadValues";

/// Reads the table or the query `what` with the operation.
Outcome Reads(SituationFacade& facade, const std::string& operation, const std::string& what,
              std::optional<RawFailure> plain = std::nullopt)
{
    facade.FailBefore();
    return Observe(
        facade.database,
        [&] {
            DbTableData data;
            return operation == Read ? facade.database.ReadValues(what, data)
                                     : facade.database.ReadTableValues(what, data);
        },
        std::move(plain));
}

std::function<Outcome()> Reading(const std::string& operation, const std::string& what, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        const std::string sql = operation == Read ? what : "SELECT * FROM " + what;
        return Reads(facade, operation, what, FailureOfPrepare(facade.plain.Handle(), sql));
    };
}

std::function<Outcome()> ReadingUntilAStepFails(const std::string& operation, const std::string& what)
{
    return [=] {
        SituationFacade facade;
        return Reads(facade, operation, what, LegacyWalk(facade.plain.Handle(), "SELECT * FROM failing").step);
    };
}

std::function<Outcome()> ReadingARowThatCannotBeConverted(const std::string& operation, const std::string& what)
{
    return [=] {
        SituationFacade facade;
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_column_value", 0, false);
        return Reads(facade, operation, what);
    };
}

} // namespace

Situations ReadingSituations()
{
    const std::string all = "SELECT * FROM failing";
    return {
        {ReadTable, "the database is closed", Reading(ReadTable, "t", false)},
        {ReadTable, "the name is empty", Reading(ReadTable, "")},
        {ReadTable, "there is no such table", Reading(ReadTable, "absent")},
        {ReadTable, "a step fails", ReadingUntilAStepFails(ReadTable, "failing")},
        {ReadTable, "a row cannot be converted", ReadingARowThatCannotBeConverted(ReadTable, "t")},
        {Read, "the database is closed", Reading(Read, "SELECT 1", false)},
        {Read, "the text is empty", Reading(Read, "")},
        {Read, "SQLite rejects the text", Reading(Read, "nonsense")},
        {Read, "a step fails", ReadingUntilAStepFails(Read, all)},
        {Read, "a row cannot be converted", ReadingARowThatCannotBeConverted(Read, "SELECT a FROM t")},
    };
}

} // namespace Morvik::sql::tests
