#include "Scenario.h"

#include <stdexcept>

namespace Morvik::sql::tests {

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
    subject.command->Execute("SELECT 1 FROM t");
}

void MakeWarmCursor(Subject& subject)
{
    MakeCursor(subject);
    SqlCommand(*subject.connection).Execute("SELECT 1 FROM t");
}

void OpenWarmFacade(Subject& subject)
{
    OpenFacade(subject);
    subject.facade->Execute("SELECT 1 FROM t");
}

} // namespace Morvik::sql::tests
