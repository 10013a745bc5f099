// Connections and facades: construction, opening, closing, moving.
#include <sqlite3.h>

#include "Scenario.h"
#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

namespace {

const std::string MemoryPath = ":memory:";
const std::string Query = "SELECT id, name FROM t WHERE id > ? ORDER BY id";

bool OpenPath(SqlDatabase& connection, const std::string& path, bool readOnly)
{
    return connection.Open(path, readOnly);
}

bool OpenPath(DatabaseApi& facade, const std::string& path, bool readOnly)
{
    return facade.OpenDatabase(path, readOnly);
}

bool ClosePath(SqlDatabase& connection)
{
    return connection.Close();
}

bool ClosePath(DatabaseApi& facade)
{
    return facade.CloseDatabase();
}

template <auto Object>
void Create(Subject& subject)
{
    (subject.*Object).emplace();
}

template <auto Object>
void CreateWithoutDirectories(Subject& subject)
{
    std::filesystem::remove_all(subject.directory / "made");
    subject.path = (subject.directory / "made" / "for the test" / "new.db").string();
    Create<Object>(subject);
}

template <auto Object>
void CreateWithoutFile(Subject& subject)
{
    subject.path = (subject.directory / "missing.db").string();
    Create<Object>(subject);
}

void CreateForFirstUse(Subject& subject)
{
    Create<Connection>(subject);
    sqlite3_shutdown();
}

void HoldStatement(Subject& subject)
{
    MakeCommand(subject);
    subject.command->Prepare("SELECT 1");
}

Report ConstructConnection(Subject& subject)
{
    subject.connection.emplace();
    return ReportOf(!subject.connection->IsOpen(), *subject.connection);
}

Report ConstructFacade(Subject& subject)
{
    subject.facade.emplace();
    return ReportOf(!subject.facade->IsOpen() && subject.facade->Succeeded(), *subject.facade);
}

template <typename Object>
bool OpenReadOnly(Subject& subject, Object& object)
{
    return ClosePath(object) && OpenPath(object, subject.path, true);
}

template <typename Object>
bool OpenForWriting(Subject& subject, Object& object)
{
    return ClosePath(object) && OpenPath(object, subject.path, false);
}

bool OpenInMemory(Subject&, SqlDatabase& connection)
{
    return connection.Close() && connection.Open(MemoryPath, false);
}

template <typename Object>
bool OpenMissingFile(Subject& subject, Object& object)
{
    return !OpenPath(object, subject.path, true) && object.GetLastError() == SQLITE_CANTOPEN;
}

template <typename Object>
bool Close(Subject& subject, Object& object)
{
    return (object.IsOpen() || OpenPath(object, subject.path, false)) && ClosePath(object);
}

template <typename Object>
bool CloseInUse(Subject&, Object& object)
{
    return !ClosePath(object) && object.GetLastError() == SQLITE_BUSY && object.IsOpen();
}

bool CloseWhileAQueryIsOpen(Subject& subject, DatabaseApi& facade)
{
    return facade.SqlQueryBegin(Query) && CloseInUse(subject, facade);
}

bool Move(Subject&, SqlDatabase& connection)
{
    NoDestructor<SqlDatabase> taken;
    *taken = std::move(connection);
    connection = std::move(*taken);
    return connection.IsOpen();
}

} // namespace

std::vector<Scenario> OpeningScenarios()
{
    using S = Scenario;
    std::vector<Scenario> creating{
        S{"OpenFile", OpenConnection, {50, 1}, On(Connection, OpenForWriting)},
        S{"OpenFileReadOnly", OpenConnection, {50, 1}, On(Connection, OpenReadOnly)},
        S{"OpenInMissingDirectories", CreateWithoutDirectories<Connection>, {50, 3}, On(Connection, OpenForWriting)},
        S{"OpenForTheFirstTime", CreateForFirstUse, {55, 1}, On(Connection, OpenForWriting)},
        S{"OpenMissingFile", CreateWithoutFile<Connection>, {10, 2}, On(Connection, OpenMissingFile)},
        S{"OpenDatabase", Create<Facade>, {50, 1}, On(Facade, OpenForWriting)},
        S{"OpenDatabaseReadOnly", Create<Facade>, {50, 1}, On(Facade, OpenReadOnly)},
        S{"OpenDatabaseInMissingDirectories", CreateWithoutDirectories<Facade>, {50, 3}, On(Facade, OpenForWriting)},
        S{"OpenMissingDatabase", CreateWithoutFile<Facade>, {10, 2}, On(Facade, OpenMissingFile)},
    };
    for (Scenario& scenario : creating) {
        scenario.refusalsForNew = {{111, "Create directory failed: "}};
    }
    std::vector<Scenario> all{
        S{"ConstructConnection", Nothing, {0, 1}, ConstructConnection},
        S{"OpenInMemory", OpenConnection, {50, 0}, On(Connection, OpenInMemory)},
        S{"CloseConnection", OpenConnection, {0, 0}, On(Connection, Close)},
        S{"CloseConnectionWithHeldStatement", HoldStatement, {1, 1}, On(Connection, CloseInUse)},
        S{"MoveConnection", OpenConnection, {0, 1}, On(Connection, Move)},
        S{"ConstructFacade", Nothing, {0, 3}, ConstructFacade},
        S{"CloseDatabase", OpenSubjectFacade, {0, 0}, On(Facade, Close)},
        S{"CloseDatabaseWhileAQueryIsOpen", OpenWarmFacade, {10, 1}, On(Facade, CloseWhileAQueryIsOpen)},
    };
    all.insert(all.end(), creating.begin(), creating.end());
    return all;
}

} // namespace Morvik::sql::tests
