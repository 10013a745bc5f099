#include <sqlite3.h>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Nonsense = "SELECT nothing_of_that_name FROM t";
const std::string Insert = "INSERT INTO t (name, weight) VALUES ('" + LongText + "', 2.5)";
const std::string Query = "SELECT id, name FROM t WHERE id > ? ORDER BY id";
const Refusal CreateDirectoryFailed{111, "Create directory failed: "};

void ArrangeMissingDirectories(Subject& subject)
{
    std::filesystem::remove_all(subject.directory / "made");
    subject.path = (subject.directory / "made" / "for the test" / "new.db").string();
    subject.facade.emplace();
}

void ArrangeMissingFile(Subject& subject)
{
    subject.path = (subject.directory / "missing.db").string();
    subject.facade.emplace();
}

void ArrangeClosed(Subject& subject)
{
    subject.facade.emplace();
}

Report Construct(Subject& subject)
{
    subject.facade.emplace();
    return ReportOf(!subject.facade->IsOpen() && subject.facade->Succeeded(), *subject.facade);
}

template <bool ReadOnly>
Report Open(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    return ReportOf(facade.CloseDatabase() && facade.OpenDatabase(subject.path, ReadOnly), facade);
}

Report OpenMissingFile(Subject& subject)
{
    const bool opened = subject.facade->OpenDatabase(subject.path, true);
    return ReportOf(!opened && subject.facade->GetLastError() == SQLITE_CANTOPEN, *subject.facade);
}

Report Close(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    return ReportOf((facade.IsOpen() || facade.OpenDatabase(subject.path, false)) && facade.CloseDatabase(), facade);
}

Report CloseWhileAQueryIsOpen(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    if (!facade.SqlQueryBegin(Query)) {
        return ReportOf(false, facade);
    }
    const bool refused = !facade.CloseDatabase() && facade.GetLastError() == SQLITE_BUSY && facade.IsOpen();
    return ReportOf(refused, facade);
}

template <const std::string& Sql>
Report Execute(Subject& subject)
{
    return ReportOf(subject.facade->Execute(Sql), *subject.facade);
}

Report ExecuteRejected(Subject& subject)
{
    const bool executed = subject.facade->Execute(Nonsense);
    return ReportOf(!executed && subject.facade->GetLastError() == SQLITE_ERROR, *subject.facade);
}

Report PrepareStatement(Subject& subject)
{
    subject.statement.emplace(subject.facade->PrepareStatement(Query));
    SqlCommand& statement = *subject.statement;
    bool read = statement.BindInteger(1, 1);
    while ((read = read && statement.Step()) && statement.HasRowData()) {
        subject.text += statement.ColumnText(1);
    }
    return ReportOf(read && statement.Finalize(), statement);
}

// The failed checks of operations without a database; each leaves a different message.
Report UseClosed(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    static const std::string Table = "t";
    static const std::string Empty;
    const bool refused =
        !facade.CreateTable(subject.definition) && !facade.DropTable(Table) && !facade.AlterTable(Table, Table) &&
        !facade.Execute(Empty) && !facade.WriteTableValues(Empty, subject.write) &&
        !facade.UpdateTableValues(Table, subject.write, Empty) && !facade.ReadValues(Query, subject.data) &&
        !facade.SqlQueryBegin(Query) && !facade.ReadNextRow(subject.row) && facade.CloseReadTable();
    return ReportOf(refused, facade);
}

} // namespace

std::vector<Scenario> FacadeScenarios()
{
    return {
        {.name = "ConstructFacade", .arrange = Nothing, .act = Construct, .least = {0, 3}},
        {.name = "OpenDatabase",
         .arrange = ArrangeClosed,
         .act = Open<false>,
         .least = {50, 1},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "OpenDatabaseReadOnly",
         .arrange = ArrangeClosed,
         .act = Open<true>,
         .least = {50, 1},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "OpenDatabaseInMissingDirectories",
         .arrange = ArrangeMissingDirectories,
         .act = Open<false>,
         .least = {50, 3},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "OpenMissingDatabase",
         .arrange = ArrangeMissingFile,
         .act = OpenMissingFile,
         .least = {10, 2},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "CloseDatabase", .arrange = OpenFacade, .act = Close, .least = {0, 0}},
        {.name = "CloseDatabaseWhileAQueryIsOpen",
         .arrange = OpenWarmFacade,
         .act = CloseWhileAQueryIsOpen,
         .least = {10, 1}},
        {.name = "Execute", .arrange = OpenWarmFacade, .act = Execute<Insert>, .least = {20, 1}},
        {.name = "ExecuteRejectedText", .arrange = OpenWarmFacade, .act = ExecuteRejected, .least = {5, 2}},
        {.name = "PrepareStatement", .arrange = OpenWarmFacade, .act = PrepareStatement, .least = {10, 2}},
        {.name = "UseClosedFacade", .arrange = ArrangeClosed, .act = UseClosed, .least = {0, 1}},
    };
}

} // namespace Morvik::sql::tests
