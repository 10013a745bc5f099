#pragma once

#include <algorithm>
#include <cctype>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The text as a reader of the document sees it.
inline std::string WithoutBackticks(std::string text)
{
    std::erase(text, '`');
    return text;
}

/// A text as the name of a test's parameter, which may contain only letters, digits and underscores.
inline std::string ParameterName(std::string text)
{
    std::ranges::replace_if(
        text, [](unsigned char byte) { return std::isalnum(byte) == 0; }, '_');
    return text;
}

/// The cells of one line of a table, without surrounding blanks and with \| as |.
inline std::vector<std::string> CellsOfLine(const std::string& line)
{
    static const std::regex Cell(R"(\| *((?:\\.|[^|\\])*?) *(?=\|))");
    static const std::regex Escaped(R"(\\(.))");
    std::vector<std::string> cells;
    for (std::sregex_iterator cell(line.begin(), line.end(), Cell), end; cell != end; ++cell) {
        cells.push_back(std::regex_replace(cell->str(1), Escaped, "$1"));
    }
    return cells;
}

/// The rows of every table of a document, in order, without the rows of column titles. Each row begins with the heading
/// of its section. Empty if there is no such file.
inline std::vector<std::vector<std::string>> TableRows(const std::string& path)
{
    std::vector<std::vector<std::string>> rows;
    std::ifstream file(path);
    std::string heading;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("## ")) {
            heading = line.substr(3);
        } else if (line.starts_with("| ---")) {
            rows.pop_back();
        } else if (line.starts_with("|")) {
            rows.push_back(CellsOfLine(line));
            rows.back().insert(rows.back().begin(), heading);
        }
    }
    return rows;
}

} // namespace Morvik::sql::tests
