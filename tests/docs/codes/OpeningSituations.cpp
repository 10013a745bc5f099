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
template <typename Database>
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
            Observe(database, FailureOfOpen(path, flags), [&] { return OpenAt(path, readOnly, database); });
        outcome.names["path"] = path;
        return outcome;
    };
}

template <typename Database>
SituationResult OpenedWithoutMemory()
{
    SqliteCallRecorder sqlite;
    sqlite.ReplaceNextResult("sqlite3_open_v2", SQLITE_NOMEM, false, 1); // the first call is raw SQLite's
    return Opening<Database>("test.db", false)();
}

template <typename Database>
void AddFailedOpenings(const std::string& open, Situations& all)
{
    const std::string longerThanANameMayBe(300, 'x');
    all.push_back({open, "the directory cannot be made", Opening<Database>("file/below/test.db", false)});
    all.push_back(
        {open, "the directory cannot be inspected", Opening<Database>(longerThanANameMayBe + "/test.db", false)});
    all.push_back({open, "the file is a directory", Opening<Database>("directory", false)});
    all.push_back({open, "the file is a directory and is to be read only", Opening<Database>("directory", true)});
    all.push_back({open, "the file does not exist and is to be read only", Opening<Database>("absent.db", true)});
    all.push_back({open, "SQLite has no memory for a connection", OpenedWithoutMemory<Database>});
}

bool OpenFacade(DatabaseApi& database)
{
    return database.OpenDatabase(":memory:", false);
}

bool CloseWithAStatement(DatabaseApi& database)
{
    const SqlCommand held = database.PrepareStatement("SELECT 1");
    return database.CloseDatabase();
}

std::optional<RawFailure> HoldAStatement(SituationFacade& /*facade*/)
{
    return FailureOfCloseWithAStatement();
}

std::optional<RawFailure> HoldAQuery(SituationFacade& facade)
{
    facade.database.SqlQueryBegin("SELECT 1");
    return FailureOfCloseWithAStatement();
}

std::optional<RawFailure> HoldARead(SituationFacade& facade)
{
    ReadTable("t")(facade.database);
    return FailureOfCloseWithAStatement();
}

std::optional<RawFailure> FailToClose(SituationFacade& facade)
{
    const std::optional<RawFailure> raw = HoldAQuery(facade);
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
    return Observe(connection.database, std::nullopt, [&] { return connection.database.Open(connection.path, false); });
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
Run OnAClosedConnection(const Operation& operation)
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
    Situations all{
        {open, "a database is open already", OnAFacade(Nothing, OpenFacade)},
        {open, "a database is open already and could not be closed", OnAFacade(FailToClose, OpenFacade)},
        {close, "a query is still held", OnAFacade(HoldAQuery, Close)},
        {close, "a complete read is still held", OnAFacade(HoldARead, Close)},
        {close, "a prepared statement is still held", OnAFacade(HoldAStatement, CloseWithAStatement)},
        {close, "the database is closed", OnAFacade(Closed, Close)},
        {"SqlDatabase::Open", "a connection is open already", ConnectionOpenedTwice},
        {"SqlDatabase::Close", "a statement is still held",
         ClosingAConnection<SqlCommand>([](SqlCommand& command) { return command.Prepare("SELECT 1"); })},
        {"SqlDatabase::Close", "a cursor is still held",
         ClosingAConnection<SqlTable>([](SqlTable& table) { return table.Open("SELECT 1"); })},
        {"SqlDatabase::Close", "the connection is closed",
         OnAClosedConnection([](SqlDatabase& database) { return database.Close(); })},
        {"SqlDatabase::GetNativeDatabaseInstance", "the connection is closed", OnAClosedConnection(NativeHandle)},
    };
    AddFailedOpenings<DatabaseApi>(open, all);
    AddFailedOpenings<SqlDatabase>("SqlDatabase::Open", all);
    return all;
}

} // namespace Morvik::sql::tests
