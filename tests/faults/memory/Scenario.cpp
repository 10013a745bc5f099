#include "Scenario.h"

#include <sstream>
#include <stdexcept>

#include "support/Cells.h"
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

Report::Report(bool done, int code, std::string_view message) : m_done(done), m_code(code)
{
    message.copy(m_message.data(), m_message.size() - 1);
}

void Subject::DestroyObjects()
{
    statement.reset();
    facade.reset();
    cursor.reset();
    command.reset();
    connection.reset();
}

void Subject::ForgetWhatWasRead()
{
    data.rows.clear();
    row.cells.clear();
    text.clear();
    otherText.clear();
    bytes.clear();
    integer = 0;
    real = 0;
    result = 0;
}

std::string Subject::WhatWasRead() const
{
    std::ostringstream read;
    std::vector<std::vector<std::string>> rows = CellTexts(data);
    rows.push_back(CellTexts(row));
    for (const std::vector<std::string>& cells : rows) {
        for (const std::string& cell : cells) {
            read << cell << "; ";
        }
        read << '\n';
    }
    read << text << '\n' << otherText << '\n' << std::string(bytes.begin(), bytes.end()) << '\n';
    read << integer << ' ' << real << ' ' << result;
    return read.str();
}

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

void OpenSubjectFacade(Subject& subject)
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
    OpenSubjectFacade(subject);
    SqlCommand reading = subject.facade->PrepareStatement("");
    ReadSchema(reading);
}

} // namespace Morvik::sql::tests
