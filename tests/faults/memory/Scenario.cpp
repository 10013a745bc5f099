#include "Scenario.h"

#include <stdexcept>

#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

void ReadSchema(SqlCommand& command)
{
    if (!SoakIsOn() && !command.Execute("SELECT 1 FROM t")) {
        throw std::runtime_error(command.GetLastErrorMsg());
    }
}

} // namespace

void Nothing(Subject&) {}

void OpenConnection(Subject& subject)
{
    subject.connection.emplace();
    if (!subject.connection->Open(subject.path, false)) {
        throw std::runtime_error(subject.connection->GetLastErrorMsg());
    }
}

void MakeCommand(Subject& subject)
{
    OpenConnection(subject);
    subject.command.emplace(*subject.connection);
}

void MakeCursor(Subject& subject)
{
    OpenConnection(subject);
    subject.cursor.emplace(*subject.connection);
}

void OpenFacade(Subject& subject)
{
    subject.facade.emplace();
    if (!subject.facade->OpenDatabase(subject.path, false)) {
        throw std::runtime_error(subject.facade->GetLastErrorMsg());
    }
}

void MakeWarmCommand(Subject& subject)
{
    MakeCommand(subject);
    ReadSchema(*subject.command);
}

void MakeWarmCursor(Subject& subject)
{
    MakeCursor(subject);
    SqlCommand reading(*subject.connection);
    ReadSchema(reading);
}

void OpenWarmFacade(Subject& subject)
{
    OpenFacade(subject);
    SqlCommand reading = subject.facade->PrepareStatement("");
    ReadSchema(reading);
}

} // namespace Morvik::sql::tests
