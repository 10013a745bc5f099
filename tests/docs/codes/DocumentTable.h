#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The text as a reader of the document sees it.
inline std::string WithoutBackticks(std::string text)
{
    std::erase(text, '`');
    return text;
}

/// The cells of one line of a table, without surrounding blanks and with \| as |.
inline std::vector<std::string> CellsOfLine(const std::string& line)
{
    std::vector<std::string> cells;
    std::string cell;
    for (std::size_t at = 1; at < line.size(); ++at) {
        if (line.compare(at, 2, "\\|") == 0) {
            cell += line[++at];
        } else if (line[at] != '|') {
            cell += line[at];
        } else {
            const std::size_t first = cell.find_first_not_of(' ');
            cells.push_back(first == std::string::npos ? ""
                                                       : cell.substr(first, cell.find_last_not_of(' ') + 1 - first));
            cell.clear();
        }
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
