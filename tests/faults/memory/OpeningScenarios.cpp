// Connections and facades: construction, opening, closing, moving.
#include <sqlite3.h>

#include "Scenario.h"
#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

namespace {

const Refusal CreateDirectoryFailed{111, "Create directory failed: "};
const std::string MemoryPath = ":memory:";
const std::string Query = "SELECT id, name FROM t WHERE id > ? ORDER BY id";

constexpr auto Connection = &Subject::connection;
constexpr auto Facade = &Subject::facade;

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

template <auto Object, bool ReadOnly = false>
Report Open(Subject& subject)
{
    auto& object = *(subject.*Object);
    return ReportOf(ClosePath(object) && OpenPath(object, subject.path, ReadOnly), object);
}

Report OpenInMemory(Subject& subject)
{
    SqlDatabase& connection = *subject.connection;
    return ReportOf(connection.Close() && connection.Open(MemoryPath, false), connection);
}

template <auto Object>
Report OpenMissingFile(Subject& subject)
{
    auto& object = *(subject.*Object);
    const bool opened = OpenPath(object, subject.path, true);
    return ReportOf(!opened && object.GetLastError() == SQLITE_CANTOPEN, object);
}

template <auto Object>
Report Close(Subject& subject)
{
    auto& object = *(subject.*Object);
    return ReportOf((object.IsOpen() || OpenPath(object, subject.path, false)) && ClosePath(object), object);
}

template <auto Object>
Report CloseInUse(Subject& subject)
{
    auto& object = *(subject.*Object);
    return ReportOf(!ClosePath(object) && object.GetLastError() == SQLITE_BUSY && object.IsOpen(), object);
}

Report CloseWhileAQueryIsOpen(Subject& subject)
{
    return subject.facade->SqlQueryBegin(Query) ? CloseInUse<Facade>(subject) : ReportOf(false, *subject.facade);
}

Report Move(Subject& subject)
{
    NoDestructor<SqlDatabase> taken;
    *taken = std::move(*subject.connection);
    *subject.connection = std::move(*taken);
    return ReportOf(subject.connection->IsOpen(), *subject.connection);
}

} // namespace

std::vector<Scenario> OpeningScenarios()
{
    constexpr bool ReadOnly = true;
    using S = Scenario;
    return {
        S{"ConstructConnection", Nothing, ConstructConnection, {0, 1}},
        S{"OpenFile", OpenConnection, Open<Connection>, {50, 1}}.WithoutNew(CreateDirectoryFailed),
        S{"OpenFileReadOnly", OpenConnection, Open<Connection, ReadOnly>, {50, 1}}.WithoutNew(CreateDirectoryFailed),
        S{"OpenInMemory", OpenConnection, OpenInMemory, {50, 0}},
        S{"OpenInMissingDirectories", CreateWithoutDirectories<Connection>, Open<Connection>, {50, 3}}.WithoutNew(
            CreateDirectoryFailed),
        S{"OpenForTheFirstTime", CreateForFirstUse, Open<Connection>, {55, 1}}.WithoutNew(CreateDirectoryFailed),
        S{"OpenMissingFile", CreateWithoutFile<Connection>, OpenMissingFile<Connection>, {10, 2}}.WithoutNew(
            CreateDirectoryFailed),
        S{"CloseConnection", OpenConnection, Close<Connection>, {0, 0}},
        S{"CloseConnectionWithHeldStatement", HoldStatement, CloseInUse<Connection>, {1, 1}},
        S{"MoveConnection", OpenConnection, Move, {0, 1}},

        S{"ConstructFacade", Nothing, ConstructFacade, {0, 3}},
        S{"OpenDatabase", Create<Facade>, Open<Facade>, {50, 1}}.WithoutNew(CreateDirectoryFailed),
        S{"OpenDatabaseReadOnly", Create<Facade>, Open<Facade, ReadOnly>, {50, 1}}.WithoutNew(CreateDirectoryFailed),
        S{"OpenDatabaseInMissingDirectories", CreateWithoutDirectories<Facade>, Open<Facade>, {50, 3}}.WithoutNew(
            CreateDirectoryFailed),
        S{"OpenMissingDatabase", CreateWithoutFile<Facade>, OpenMissingFile<Facade>, {10, 2}}.WithoutNew(
            CreateDirectoryFailed),
        S{"CloseDatabase", OpenFacade, Close<Facade>, {0, 0}},
        S{"CloseDatabaseWhileAQueryIsOpen", OpenWarmFacade, CloseWhileAQueryIsOpen, {10, 1}},
    };
}

} // namespace Morvik::sql::tests
