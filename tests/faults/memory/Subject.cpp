#include "Subject.h"

#include <algorithm>
#include <sstream>

#include "support/Cells.h"

namespace Morvik::sql::tests {

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
    for (const std::vector<std::string>& cells : CellTexts(data)) {
        for (const std::string& cell : cells) {
            read << cell << "; ";
        }
        read << '\n';
    }
    for (const std::string& cell : CellTexts(row)) {
        read << cell << "; ";
    }
    read << '\n' << text << '\n' << otherText << '\n' << std::string(bytes.begin(), bytes.end()) << '\n';
    read << integer << ' ' << real << ' ' << result;
    return read.str();
}

} // namespace Morvik::sql::tests
