// Connections and facades: construction, opening, closing, moving.
#include <sqlite3.h>

#include "Scenario.h"
#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

namespace {

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

constexpr AllowedError CreateDirectoryFailed{111, "Create directory failed: "};

// Adds the scenarios that open and close one of the subject's objects, a connection or a facade.
template <auto Object, auto Open, auto Close>
struct Opening {
    ScenarioList& list;

    void AddOpen(std::string name, void (*arrange)(Subject&), Allocations allocations, bool readOnly) const
    {
        const auto act = [=](Subject& subject, auto& used) {
            return (used.*Close)() && (used.*Open)(subject.path, readOnly);
        };
        allocations.errorsOfNew = {CreateDirectoryFailed};
        list.Add(std::move(name), arrange, allocations, Object, act);
    }

    void AddOpenMissing(std::string name) const
    {
        const auto act = [](Subject& subject, auto& used) {
            return !(used.*Open)(subject.path, true) && used.GetLastError() == SQLITE_CANTOPEN;
        };
        const Allocations allocations{.ofSqlite = 10, .ofNew = 2, .errorsOfNew = {CreateDirectoryFailed}};
        list.Add(std::move(name), CreateWithoutFile<Object>, allocations, Object, act);
    }

    void AddClose(std::string name, void (*arrange)(Subject&)) const
    {
        list.Add(std::move(name), arrange, {0, 0}, Object, [](Subject& subject, auto& used) {
            return (used.IsOpen() || (used.*Open)(subject.path, false)) && (used.*Close)();
        });
    }
};

} // namespace

void AddOpeningScenarios(ScenarioList& list)
{
    const Opening<Connection, &SqlDatabase::Open, &SqlDatabase::Close> connection{list};
    connection.AddOpen("OpenFile", OpenConnection, {50, 1}, false);
    connection.AddOpen("OpenFileReadOnly", OpenConnection, {50, 1}, true);
    connection.AddOpen("OpenInMissingDirectories", CreateWithoutDirectories<Connection>, {50, 3}, false);
    connection.AddOpen("OpenForTheFirstTime", CreateForFirstUse, {55, 1}, false);
    connection.AddOpenMissing("OpenMissingFile");
    connection.AddClose("CloseConnection", OpenConnection);

    const Opening<Facade, &DatabaseApi::OpenDatabase, &DatabaseApi::CloseDatabase> facade{list};
    facade.AddOpen("OpenDatabase", Create<Facade>, {50, 1}, false);
    facade.AddOpen("OpenDatabaseReadOnly", Create<Facade>, {50, 1}, true);
    facade.AddOpen("OpenDatabaseInMissingDirectories", CreateWithoutDirectories<Facade>, {50, 3}, false);
    facade.AddOpenMissing("OpenMissingDatabase");
    facade.AddClose("CloseDatabase", OpenFacade);

    list.Add("ConstructConnection", Nothing, {0, 1}, [](Subject& subject) {
        const SqlDatabase& made = subject.connection.emplace();
        return Report(!made.IsOpen(), made);
    });
    list.Add("ConstructFacade", Nothing, {0, 3}, [](Subject& subject) {
        const DatabaseApi& made = subject.facade.emplace();
        return Report(!made.IsOpen() && made.Succeeded(), made);
    });
    list.Add("OpenInMemory", OpenConnection, {50, 0}, Connection, [](Subject&, SqlDatabase& used) {
        static const std::string Path = ":memory:";
        return used.Close() && used.Open(Path, false);
    });
    list.Add("CloseConnectionWithHeldStatement", HoldStatement, {1, 1}, Connection, [](Subject&, SqlDatabase& used) {
        return !used.Close() && used.GetLastError() == SQLITE_BUSY && used.IsOpen();
    });
    list.Add("CloseDatabaseWhileAQueryIsOpen", Warm<OpenFacade>, {10, 1}, Facade, [](Subject&, DatabaseApi& used) {
        static const std::string Query = "SELECT id, name FROM t WHERE id > ? ORDER BY id";
        return used.SqlQueryBegin(Query) && !used.CloseDatabase() && used.GetLastError() == SQLITE_BUSY &&
               used.IsOpen();
    });
    list.Add("MoveConnection", OpenConnection, {0, 1}, Connection, [](Subject&, SqlDatabase& used) {
        NoDestructor<SqlDatabase> taken;
        *taken = std::move(used);
        used = std::move(*taken);
        return used.IsOpen();
    });
}

} // namespace Morvik::sql::tests
