#include <sql/SqlCommand.h>
#include <sql/SqlTable.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <sqlite3.h>

#include "docs/codes/Situation.h"

namespace Morvik::sql::tests {

namespace {

/// Opens `name` in a directory that holds a directory and a file.
template <typename Database, auto Open>
Run Opening(const std::string& name, bool readOnly)
{
    return [=] {
        const TemporaryDirectory directory;
        std::filesystem::create_directory(directory.File("directory"));
        std::ofstream(directory.File("file")) << "in the way";
        const std::string path = directory.File(name);
        const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
        Database database;
        SituationResult outcome =
            Observe(database, FailureOfOpen(path, flags), [&] { return std::invoke(Open, database, path, readOnly); });
        outcome.names["path"] = path;
        return outcome;
    };
}

template <typename Database, auto Open>
SituationResult OpenedWithoutMemory()
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_open_v2", SQLITE_NOMEM, false, 1); // the first call is raw SQLite's
    return Opening<Database, Open>("test.db", false)();
}

template <typename Database, auto Open>
void AddFailedOpenings(const std::string& open, Situations& all)
{
    const auto add = [&](const char* situation, const std::string& name, bool readOnly) {
        all.push_back({open, situation, Opening<Database, Open>(name, readOnly)});
    };
    add("the directory cannot be made", "file/below/test.db", false);
    add("the directory cannot be inspected", std::string(300, 'x') + "/test.db", false); // too long for a name
    add("the file is a directory", "directory", false);
    add("the file is a directory and is to be read only", "directory", true);
    add("the file does not exist and is to be read only", "absent.db", true);
    all.push_back({open, "SQLite has no memory for a connection", OpenedWithoutMemory<Database, Open>});
}

bool CloseWithAStatement(DatabaseApi& database)
{
    const SqlCommand held = database.PrepareStatement("SELECT 1");
    return database.CloseDatabase();
}

/// Runs an operation that leaves a statement open.
template <typename Operation>
Arrange Holding(Operation operation)
{
    return [=](SituationFacade& facade) {
        operation(facade.database);
        return FailureOfCloseWithAStatement();
    };
}

RawFailure FailToClose(SituationFacade& facade)
{
    const RawFailure raw = Holding(Begin("SELECT 1"))(facade);
    facade.database.CloseDatabase();
    facade.FailBefore();
    return raw;
}

SituationResult ConnectionOpenedTwice()
{
    SituationConnection connection;
    SqlCommand command(connection.database);
    command.Prepare("SELECT 1");
    connection.database.Close(); // is rejected, and leaves an error
    return Observe(connection.database, {}, [&] { return connection.database.Open(connection.path, false); });
}

template <typename Holder>
Run ClosingAConnection(bool (*hold)(Holder&))
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
        return Observe(database, {}, [&] { return operation(database); });
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
    const auto openFacade = Call<&DatabaseApi::OpenDatabase>(":memory:", false);
    const auto closeFacade = &DatabaseApi::CloseDatabase;
    Situations all{
        {open, "a database is open already", OnAFacade(Nothing, openFacade)},
        {open, "a database is open already and could not be closed", OnAFacade(FailToClose, openFacade)},
        {close, "a query is still held", OnAFacade(Holding(Begin("SELECT 1")), closeFacade)},
        {close, "a complete read is still held", OnAFacade(Holding(ReadTable("t")), closeFacade)},
        {close, "a prepared statement is still held",
         OnAFacade([](SituationFacade&) { return FailureOfCloseWithAStatement(); }, CloseWithAStatement)},
        {close, "the database is closed", OnAFacade(Closed, closeFacade)},
        {"SqlDatabase::Open", "a connection is open already", ConnectionOpenedTwice},
        {"SqlDatabase::Close", "a statement is still held",
         ClosingAConnection<SqlCommand>([](SqlCommand& command) { return command.Prepare("SELECT 1"); })},
        {"SqlDatabase::Close", "a cursor is still held",
         ClosingAConnection<SqlTable>([](SqlTable& table) { return table.Open("SELECT 1"); })},
        {"SqlDatabase::Close", "the connection is closed",
         OnAClosedConnection([](SqlDatabase& database) { return database.Close(); })},
        {"SqlDatabase::GetNativeDatabaseInstance", "the connection is closed", OnAClosedConnection(NativeHandle)},
    };
    AddFailedOpenings<DatabaseApi, &DatabaseApi::OpenDatabase>(open, all);
    AddFailedOpenings<SqlDatabase, &SqlDatabase::Open>("SqlDatabase::Open", all);
    return all;
}

} // namespace Morvik::sql::tests
