#include <sqlite3.h>

#include "Scenario.h"
#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

namespace {

const Refusal CreateDirectoryFailed{111, "Create directory failed: "};

const std::string MemoryPath = ":memory:";

void ArrangeMissingDirectories(Subject& subject)
{
    std::filesystem::remove_all(subject.directory / "made");
    subject.path = (subject.directory / "made" / "for the test" / "new.db").string();
    subject.connection.emplace();
}

void ArrangeMissingFile(Subject& subject)
{
    subject.path = (subject.directory / "missing.db").string();
    subject.connection.emplace();
}

void ArrangeFirstUse(Subject& subject)
{
    subject.connection.emplace();
    sqlite3_shutdown();
}

void ArrangeHeldStatement(Subject& subject)
{
    MakeCommand(subject);
    subject.command->Prepare("SELECT 1");
}

Report Construct(Subject& subject)
{
    subject.connection.emplace();
    return ReportOf(!subject.connection->IsOpen(), *subject.connection);
}

template <bool ReadOnly>
Report Open(Subject& subject)
{
    SqlDatabase& connection = *subject.connection;
    return ReportOf(connection.Close() && connection.Open(subject.path, ReadOnly), connection);
}

Report OpenInMemory(Subject& subject)
{
    SqlDatabase& connection = *subject.connection;
    return ReportOf(connection.Close() && connection.Open(MemoryPath, false), connection);
}

Report OpenMissingFile(Subject& subject)
{
    const bool opened = subject.connection->Open(subject.path, true);
    return ReportOf(!opened && subject.connection->GetLastError() == SQLITE_CANTOPEN, *subject.connection);
}

Report Close(Subject& subject)
{
    SqlDatabase& connection = *subject.connection;
    return ReportOf((connection.IsOpen() || connection.Open(subject.path, false)) && connection.Close(), connection);
}

Report CloseWithHeldStatement(Subject& subject)
{
    SqlDatabase& connection = *subject.connection;
    const bool refused = !connection.Close() && connection.IsOpen() && connection.GetLastError() == SQLITE_BUSY;
    return ReportOf(refused, connection);
}

Report Move(Subject& subject)
{
    NoDestructor<SqlDatabase> taken;
    *taken = std::move(*subject.connection);
    *subject.connection = std::move(*taken);
    return ReportOf(subject.connection->IsOpen(), *subject.connection);
}

} // namespace

std::vector<Scenario> ConnectionScenarios()
{
    return {
        {.name = "ConstructConnection", .arrange = Nothing, .act = Construct, .least = {0, 1}},
        {.name = "OpenFile",
         .arrange = OpenConnection,
         .act = Open<false>,
         .least = {50, 1},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "OpenFileReadOnly",
         .arrange = OpenConnection,
         .act = Open<true>,
         .least = {50, 1},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "OpenInMemory", .arrange = OpenConnection, .act = OpenInMemory, .least = {50, 0}},
        {.name = "OpenInMissingDirectories",
         .arrange = ArrangeMissingDirectories,
         .act = Open<false>,
         .least = {50, 3},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "OpenForTheFirstTime",
         .arrange = ArrangeFirstUse,
         .act = Open<false>,
         .least = {55, 1},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "OpenMissingFile",
         .arrange = ArrangeMissingFile,
         .act = OpenMissingFile,
         .least = {10, 2},
         .refusalsForNew = {CreateDirectoryFailed}},
        {.name = "CloseConnection", .arrange = OpenConnection, .act = Close, .least = {0, 0}},
        {.name = "CloseConnectionWithHeldStatement",
         .arrange = ArrangeHeldStatement,
         .act = CloseWithHeldStatement,
         .least = {1, 1}},
        {.name = "MoveConnection", .arrange = OpenConnection, .act = Move, .least = {0, 1}},
    };
}

} // namespace Morvik::sql::tests
