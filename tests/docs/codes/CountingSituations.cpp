#include <sqlite3.h>

#include <string>

#include "docs/codes/SituationFacade.h"
#include "support/OomInjector.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

Outcome Counted(SituationFacade& facade, const std::string& table, const std::string& condition,
                std::optional<RawFailure> plain = std::nullopt)
{
    facade.FailBefore();
    return Observe(
        facade.database,
        [&] {
            int result = -1;
            const int count = facade.database.ExistData(table, condition, result);
            return std::to_string(count) + ", result " + std::to_string(result);
        },
        std::move(plain));
}

std::function<Outcome()> Counting(const std::string& table, const std::string& condition = "")
{
    return [=] {
        SituationFacade facade;
        return Counted(facade, table, condition);
    };
}

Outcome NameWithAnApostrophe()
{
    SituationFacade facade;
    return Counted(facade, "it's", "", FailureOfPrepare(facade.plain.Handle(), TableExistsQuery("it's")));
}

Outcome ClosedDatabase()
{
    SituationFacade facade(false);
    return Counted(facade, "t", "", FailureOfPrepare(nullptr, TableExistsQuery("t")));
}

Outcome LockedFile()
{
    SituationFacade facade;
    const RawSqlite other(facade.path);
    facade.plain.Execute("BEGIN EXCLUSIVE");
    return Counted(facade, "t", "", FailureOfPrepare(other.Handle(), TableExistsQuery("t")));
}

Outcome FailedStepOfTheTest()
{
    SituationFacade facade;
    facade.LockAfterTheSchemaWasRead();
    return Counted(facade, "t", "");
}

Outcome RejectedCondition()
{
    SituationFacade facade;
    const std::string condition = "WHERE absent = 1";
    return Counted(facade, "t", condition,
                   FailureOfPrepare(facade.plain.Handle(), "SELECT count(*) FROM t " + condition));
}

Outcome FailedStep()
{
    SituationFacade facade;
    const std::string condition = "WHERE abs(-9223372036854775807 - a)";
    return Counted(facade, "t", condition,
                   LegacyWalk(facade.plain.Handle(), "SELECT count(*) FROM t " + condition).finalize);
}

Outcome NoMemory()
{
    SituationFacade facade;
    facade.FailBefore();
    return Observe(facade.database, [&] {
        const std::string table = "t";
        int result = -1;
        int count = -1;
        {
            const OomInjector failing(0);
            count = facade.database.ExistData(table, "", result);
            if (!failing.Fired()) {
                return std::string("nothing failed");
            }
        }
        return std::to_string(count) + ", result " + std::to_string(result);
    });
}

/// The first call of sqlite3_finalize ends the test for the table, the second call ends the query.
Outcome FailedClosing()
{
    SituationFacade facade;
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_finalize", SQLITE_IOERR, true, 1);
    return Counted(facade, "t", "", RawFailure{SQLITE_IOERR, sqlite3_errmsg(facade.plain.Handle())});
}

} // namespace

Situations CountingSituations()
{
    const std::string exist = "IDatabaseApi::ExistData";
    return {
        {exist, "there is no such table", Counting("absent")},
        {exist, "the name is empty", Counting("")},
        {exist, "the name holds an apostrophe", NameWithAnApostrophe},
        {exist, "the database is closed", ClosedDatabase},
        {exist, "the file is locked and its schema was not read", LockedFile},
        {exist, "the test's step fails", FailedStepOfTheTest},
        {exist, "SQLite rejects the condition", RejectedCondition},
        {exist, "the query's step fails", FailedStep},
        {exist, "the first cell holds no integer", Counting("t", "WHERE 0 GROUP BY a UNION ALL SELECT 'text'")},
        {exist, "memory runs out", NoMemory},
        {exist, "the query's closing fails", FailedClosing},
    };
}

} // namespace Morvik::sql::tests
