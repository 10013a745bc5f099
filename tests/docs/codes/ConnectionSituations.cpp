#include <sql/SqlCommand.h>
#include <sql/SqlTable.h>

#include <sqlite3.h>

#include <fstream>
#include <string>

#include "docs/codes/SituationConnection.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

Outcome Opened(const std::string& path, bool readOnly, std::optional<RawFailure> plain = std::nullopt)
{
    SqlDatabase database;
    Outcome outcome = Observe(
        database, [&] { return database.Open(path, readOnly); }, std::move(plain));
    outcome.names["path"] = path;
    return outcome;
}

Outcome SecondOpen()
{
    SituationConnection connection;
    SqlCommand command(connection.database);
    command.Prepare("SELECT 1");
    connection.database.Close(); // is rejected, and leaves an error in the record
    return Observe(connection.database, [&] { return connection.database.Open(connection.path, false); });
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
    return Opened(path, false, FailureOfOpen(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE));
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

Outcome CloseWithAStatement()
{
    SituationConnection connection;
    SqlCommand command(connection.database);
    command.Prepare("SELECT 1");
    return Observe(
        connection.database, [&] { return connection.database.Close(); }, FailureOfCloseWithAStatement());
}

Outcome CloseWithACursor()
{
    SituationConnection connection;
    const SqlTable table(connection.database);
    table.Open("SELECT 1");
    return Observe(
        connection.database, [&] { return connection.database.Close(); }, FailureOfCloseWithAStatement());
}

/// Runs the operation on a closed connection whose opening failed.
template <typename Operation>
Outcome OnAClosedConnection(Operation operation)
{
    const TemporaryDirectory directory;
    SqlDatabase database;
    database.Open(directory.Path().string(), false);
    return Observe(database, [&] { return operation(database); });
}

} // namespace

Situations ConnectionSituations()
{
    const std::string open = "SqlDatabase::Open";
    const std::string close = "SqlDatabase::Close";
    return {
        {open, "a connection is open already", SecondOpen},
        {open, "the directory cannot be made", DirectoryThatCannotBeMade},
        {open, "the directory cannot be inspected", DirectoryThatCannotBeInspected},
        {open, "the file is a directory", FileThatIsADirectory},
        {open, "the file is a directory and is to be read only", DirectoryReadOnly},
        {open, "the file does not exist and is to be read only", MissingFileReadOnly},
        {open, "SQLite has no memory for a connection", NoMemoryForAConnection},
        {close, "a statement is still held", CloseWithAStatement},
        {close, "a cursor is still held", CloseWithACursor},
        {close, "the connection is closed",
         [] { return OnAClosedConnection([](SqlDatabase& database) { return database.Close(); }); }},
        {"SqlDatabase::GetNativeDatabaseInstance", "the connection is closed",
         [] {
             return OnAClosedConnection([](SqlDatabase& database) {
                 return std::string(database.GetNativeDatabaseInstance<sqlite3>() == nullptr ? "null" : "a handle");
             });
         }},
    };
}

} // namespace Morvik::sql::tests
