#include "Scenario.h"

#include <sstream>
#include <stdexcept>

#include "support/FacadeDriver.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

template <typename Object>
void Require(bool succeeded, const Object& object)
{
    if (!succeeded) {
        throw std::runtime_error(object.GetLastErrorMsg());
    }
}

} // namespace

void Subject::DestroyObjects()
{
    statement.reset();
    facade.reset();
    cursor.reset();
    command.reset();
    connection.reset();
}

std::string Subject::WhatWasRead() const
{
    std::ostringstream read;
    for (const DbTableRowValues& each : data.rows) {
        read << RowText(each) << '\n';
    }
    read << RowText(row) << '\n';
    read << text << '\n' << otherText << '\n' << std::string(bytes.begin(), bytes.end()) << '\n';
    read << integer << ' ' << real << ' ' << result;
    return read.str();
}

void Nothing(Subject&) {}

void OpenConnection(Subject& subject)
{
    SqlDatabase& connection = subject.connection.emplace();
    Require(connection.Open(subject.path, false), connection);
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
    DatabaseApi& facade = subject.facade.emplace();
    Require(facade.OpenDatabase(subject.path, false), facade);
}

void ReadSchema(Subject& subject)
{
    if (!SoakIsOn()) {
        SqlCommand reading = subject.facade ? subject.facade->PrepareStatement("") : SqlCommand(*subject.connection);
        Require(reading.Execute("SELECT 1 FROM t"), reading);
    }
}

} // namespace Morvik::sql::tests
