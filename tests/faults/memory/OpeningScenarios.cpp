// Connections and facades: construction, opening, closing, moving.
#include <sqlite3.h>

#include <filesystem>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

template <auto Object>
void CreateWithoutDirectories(Subject& subject)
{
    const std::string made = subject.path + ".made";
    std::filesystem::remove_all(made);
    subject.path = made + "/for the test/new.db";
    Create<Object>(subject);
}

template <auto Object>
void CreateWithoutFile(Subject& subject)
{
    subject.path += ".missing";
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

Allocations Opening(int ofSqlite, int ofNew)
{
    return {.ofSqlite = ofSqlite, .ofNew = ofNew, .errorsOfNew = {{111, "Create directory failed: "}}};
}

// Adds the scenarios that open and close one of the subject's objects, a connection or a facade.
template <auto Object, auto Open, auto Close>
void AddOpeningAndClosing(ScenarioList& list, const std::string& name, int constructing, void (*arrange)(Subject&))
{
    list.Add("Construct" + name, Nothing, {0, constructing}, [](Subject& subject) {
        const auto& made = (subject.*Object).emplace();
        return Report(!made.IsOpen() && made.GetLastError() == SQLITE_OK, made);
    });
    const auto opening = [](bool readOnly) {
        return [=](Subject& subject, auto& used) { return (used.*Close)() && (used.*Open)(subject.path, readOnly); };
    };
    list.Add("Open" + name, arrange, Opening(50, 1), Object, opening(false));
    list.Add("Open" + name + "ReadOnly", arrange, Opening(50, 1), Object, opening(true));
    list.Add("Open" + name + "InMissingDirectories", CreateWithoutDirectories<Object>, Opening(50, 3), Object,
             opening(false));
    list.Add("OpenMissing" + name, CreateWithoutFile<Object>, Opening(10, 2), Object, [](Subject& subject, auto& used) {
        return !(used.*Open)(subject.path, true) && used.GetLastError() == SQLITE_CANTOPEN;
    });
    list.Add("Close" + name, arrange, {0, 0}, Object, [](Subject& subject, auto& used) {
        return (used.IsOpen() || (used.*Open)(subject.path, false)) && (used.*Close)();
    });
}

} // namespace

void AddOpeningScenarios(ScenarioList& list)
{
    AddOpeningAndClosing<Connection, &SqlDatabase::Open, &SqlDatabase::Close>(list, "Connection", 1, OpenConnection);
    AddOpeningAndClosing<Facade, &DatabaseApi::OpenDatabase, &DatabaseApi::CloseDatabase>(list, "Facade", 3,
                                                                                          OpenFacade);

    list.Add("OpenForTheFirstTime", CreateForFirstUse, Opening(55, 1), Connection,
             [](Subject& subject, SqlDatabase& used) { return used.Close() && used.Open(subject.path, false); });
    list.Add("OpenInMemory", OpenConnection, {50, 0}, Connection,
             [](Subject&, SqlDatabase& used) { return used.Close() && used.Open(":memory:", false); });
    list.Add("CloseConnectionWithHeldStatement", HoldStatement, {1, 1}, Connection, [](Subject&, SqlDatabase& used) {
        return !used.Close() && used.GetLastError() == SQLITE_BUSY && used.IsOpen();
    });
    list.Add("CloseFacadeWhileAQueryIsOpen", Warm<OpenFacade>, {10, 1}, Facade, [](Subject&, DatabaseApi& used) {
        return used.SqlQueryBegin(BoundQuery) && !used.CloseDatabase() && used.GetLastError() == SQLITE_BUSY &&
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
