#include "Scenario.h"

#include <sstream>

#include "support/FacadeDriver.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

void Subject::DestroyObjects()
{
    cursor.reset();
    command.reset();
    facade.reset();
    connection.reset();
}

std::string Subject::RowsRead() const
{
    std::string rows;
    for (const DbTableRowValues& each : data.rows) {
        rows += RowText(each) + '\n';
    }
    return rows;
}

std::string Subject::WhatWasRead() const
{
    std::ostringstream read;
    read << RowsRead() << "row " << RowText(row) << '\n' << text << '\n' << std::string(bytes.begin(), bytes.end());
    read << '\n' << integer << ' ' << real << ' ' << result;
    return read.str();
}

void OpenConnection(Subject& subject)
{
    subject.connection.emplace().Open(subject.path, false);
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
    subject.facade.emplace().OpenDatabase(subject.path, false);
}

void ReadSchema(Subject& subject)
{
    if (!SoakIsOn()) {
        SqlCommand reading = subject.facade ? subject.facade->PrepareStatement("") : SqlCommand(*subject.connection);
        reading.Execute("SELECT 1 FROM t");
    }
}

} // namespace Morvik::sql::tests
