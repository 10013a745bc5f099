#include <sql/SqlCommand.h>
#include <sql/SqlTable.h>

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "docs/codes/Situation.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

template <typename Database>
SituationResult Opened(const std::string& path, bool readOnly)
{
    Database database;
    const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    SituationResult outcome =
        Observe(database, FailureOfOpen(path, flags), [&] { return OpenAt(path, readOnly, database); });
    outcome.names["path"] = path;
    return outcome;
}

/// Opens `name` in a directory that holds a directory and a file.
template <typename Database>
Run Opening(const std::string& name, bool readOnly)
{
    return [=] {
        const TemporaryDirectory directory;
        std::filesystem::create_directory(directory.File("directory"));
        std::ofstream(directory.File("file")) << "in the way";
        return Opened<Database>(directory.File(name), readOnly);
    };
}

template <typename Database>
SituationResult OpenedWithoutMemory()
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_open_v2", SQLITE_NOMEM, false, 1); // the first call is raw SQLite's
    return Opened<Database>(":memory:", false);
}

template <typename Database>
Situations FailedOpenings(const std::string& open)
{
    const std::string longerThanANameMayBe(300, 'x');
    return {
        {open, "the directory cannot be made", Opening<Database>("file/below/test.db", false)},
        {open, "the directory cannot be inspected", Opening<Database>(longerThanANameMayBe + "/test.db", false)},
        {open, "the file is a directory", Opening<Database>("directory", false)},
        {open, "the file is a directory and is to be read only", Opening<Database>("directory", true)},
        {open, "the file does not exist and is to be read only", Opening<Database>("absent.db", true)},
        {open, "SQLite has no memory for a connection", OpenedWithoutMemory<Database>},
    };
}

SituationResult OpenedTwice()
{
    SituationFacade facade;
    return Observe(facade.database, std::nullopt, [&] { return facade.database.OpenDatabase(facade.path, false); });
}

SituationResult OpenedAfterARejectedClose()
{
    SituationFacade facade;
    facade.database.SqlQueryBegin("SELECT 1");
    facade.database.CloseDatabase();
    facade.FailBefore();
    return Observe(facade.database, FailureOfCloseWithAStatement(),
                   [&] { return facade.database.OpenDatabase(facade.path, false); });
}

SituationResult ConnectionOpenedTwice()
{
    SituationConnection connection;
    SqlCommand command(connection.database);
    command.Prepare("SELECT 1");
    connection.database.Close(); // is rejected, and leaves an error
    return Observe(connection.database, std::nullopt, [&] { return connection.database.Open(connection.path, false); });
}

/// Closes the facade while it holds what `hold` returns.
template <typename Hold>
Run Closing(Hold hold, bool open = true)
{
    return [=] {
        SituationFacade facade(open);
        [[maybe_unused]] const auto held = hold(facade.database);
        return Observe(facade.database, FailureOfCloseWithAStatement(),
                       [&] { return facade.database.CloseDatabase(); });
    };
}

template <typename Holder>
Run ClosingAConnection(void (*hold)(Holder&))
{
    return [=] {
        SituationConnection connection;
        Holder holder(connection.database);
        hold(holder);
        return Observe(connection.database, FailureOfCloseWithAStatement(),
                       [&] { return connection.database.Close(); });
    };
}

/// Runs the operation on a closed connection whose opening failed.
template <typename Operation>
Run OnAClosedConnection(Operation operation)
{
    return [=] {
        const TemporaryDirectory directory;
        SqlDatabase database;
        database.Open(directory.Path().string(), false);
        return Observe(database, std::nullopt, [&] { return operation(database); });
    };
}

std::string NativeHandle(SqlDatabase& database)
{
    return database.GetNativeDatabaseInstance<sqlite3>() == nullptr ? "null" : "a handle";
}

} // namespace

Situations OpeningSituations()
{
    const std::string open = "IDatabaseApi::OpenDatabase";
    const std::string close = "IDatabaseApi::CloseDatabase";
    const auto query = [](DatabaseApi& database) { return database.SqlQueryBegin("SELECT 1"); };
    const auto read = [](DatabaseApi& database) {
        DbTableData data;
        return database.ReadTableValues("t", data);
    };
    const auto statement = [](DatabaseApi& database) { return database.PrepareStatement("SELECT 1"); };
    const auto nothing = [](DatabaseApi&) { return 0; };
    Situations all{
        {open, "a database is open already", OpenedTwice},
        {open, "a database is open already and could not be closed", OpenedAfterARejectedClose},
        {close, "a query is still held", Closing(query)},
        {close, "a complete read is still held", Closing(read)},
        {close, "a prepared statement is still held", Closing(statement)},
        {close, "the database is closed", Closing(nothing, false)},
        {"SqlDatabase::Open", "a connection is open already", ConnectionOpenedTwice},
        {"SqlDatabase::Close", "a statement is still held",
         ClosingAConnection<SqlCommand>([](SqlCommand& command) { command.Prepare("SELECT 1"); })},
        {"SqlDatabase::Close", "a cursor is still held",
         ClosingAConnection<SqlTable>([](SqlTable& table) { table.Open("SELECT 1"); })},
        {"SqlDatabase::Close", "the connection is closed",
         OnAClosedConnection([](SqlDatabase& database) { return database.Close(); })},
        {"SqlDatabase::GetNativeDatabaseInstance", "the connection is closed", OnAClosedConnection(NativeHandle)},
    };
    for (const Situations& failed :
         {FailedOpenings<DatabaseApi>(open), FailedOpenings<SqlDatabase>("SqlDatabase::Open")}) {
        all.insert(all.end(), failed.begin(), failed.end());
    }
    return all;
}

} // namespace Morvik::sql::tests
