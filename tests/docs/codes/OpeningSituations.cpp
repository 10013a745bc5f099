#include <sqlite3.h>

#include <fstream>
#include <string>

#include "docs/codes/SituationFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

constexpr int ReadWriteCreate = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

Outcome Opened(const std::string& path, bool readOnly, std::optional<RawFailure> plain = std::nullopt)
{
    DatabaseApi database;
    Outcome outcome = Observe(
        database, [&] { return database.OpenDatabase(path, readOnly); }, std::move(plain));
    outcome.names["path"] = path;
    return outcome;
}

Outcome Closed(SituationFacade& facade)
{
    return Observe(
        facade.database, [&] { return facade.database.CloseDatabase(); }, FailureOfCloseWithAStatement());
}

Outcome DirectoryThatCannotBeMade()
{
    const TemporaryDirectory directory;
    std::ofstream(directory.File("file")) << "in the way";
    return Opened(directory.File("file/below/test.db"), false);
}

Outcome DirectoryThatCannotBeInspected()
{
    const TemporaryDirectory directory;
    return Opened(directory.File(std::string(300, 'x') + "/test.db"), false); // longer than any file name may be
}

Outcome FileThatIsADirectory()
{
    const TemporaryDirectory directory;
    const std::string path = directory.Path().string();
    return Opened(path, false, FailureOfOpen(path, ReadWriteCreate));
}

Outcome DirectoryReadOnly()
{
    const TemporaryDirectory directory;
    const std::string path = directory.Path().string();
    return Opened(path, true, FailureOfOpen(path, SQLITE_OPEN_READONLY));
}

Outcome MissingFileReadOnly()
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("absent.db");
    return Opened(path, true, FailureOfOpen(path, SQLITE_OPEN_READONLY));
}

Outcome NoMemoryForAConnection()
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_open_v2", SQLITE_NOMEM, false);
    return Opened(":memory:", false);
}

Outcome SecondOpen()
{
    SituationFacade facade;
    facade.FailBefore();
    return Observe(facade.database, [&] { return facade.database.OpenDatabase(facade.path, false); });
}

Outcome SecondOpenAfterARefusedClose()
{
    SituationFacade facade;
    facade.database.SqlQueryBegin("SELECT 1");
    facade.database.CloseDatabase();
    facade.FailBefore();
    return Observe(
        facade.database, [&] { return facade.database.OpenDatabase(facade.path, false); },
        FailureOfCloseWithAStatement());
}

Outcome CloseWithAQuery()
{
    SituationFacade facade;
    facade.database.SqlQueryBegin("SELECT 1");
    return Closed(facade);
}

Outcome CloseWithAWholeRead()
{
    SituationFacade facade;
    DbTableData data;
    facade.database.ReadTableValues("t", data);
    return Closed(facade);
}

Outcome CloseWithAPreparedStatement()
{
    SituationFacade facade;
    const SqlCommand command = facade.database.PrepareStatement("SELECT 1");
    return Closed(facade);
}

Outcome CloseOfAClosedDatabase()
{
    SituationFacade facade(false);
    facade.FailBefore();
    return Closed(facade);
}

} // namespace

Situations OpeningSituations()
{
    const std::string open = "IDatabaseApi::OpenDatabase";
    const std::string close = "IDatabaseApi::CloseDatabase";
    return {
        {open, "the directory cannot be made", DirectoryThatCannotBeMade},
        {open, "the directory cannot be inspected", DirectoryThatCannotBeInspected},
        {open, "the file is a directory", FileThatIsADirectory},
        {open, "the file is a directory and is to be read only", DirectoryReadOnly},
        {open, "the file does not exist and is to be read only", MissingFileReadOnly},
        {open, "SQLite has no memory for a connection", NoMemoryForAConnection},
        {open, "a database is open already", SecondOpen},
        {open, "a database is open already and could not be closed", SecondOpenAfterARefusedClose},
        {close, "a query is still held", CloseWithAQuery},
        {close, "a whole read is still held", CloseWithAWholeRead},
        {close, "a prepared statement is still held", CloseWithAPreparedStatement},
        {close, "the database is closed", CloseOfAClosedDatabase},
    };
}

} // namespace Morvik::sql::tests
