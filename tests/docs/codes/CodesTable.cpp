#include "docs/codes/CodesTable.h"

#include <cstddef>
#include <fstream>
#include <stdexcept>

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t Columns = 5;

std::string Trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// Returns the texts between backticks: the operations of a row.
std::vector<std::string> Quoted(const std::string& cell)
{
    std::vector<std::string> texts;
    for (std::size_t begin = cell.find('`'); begin != std::string::npos;) {
        const std::size_t end = cell.find('`', begin + 1);
        texts.push_back(cell.substr(begin + 1, end - begin - 1));
        begin = end == std::string::npos ? end : cell.find('`', end + 1);
    }
    return texts;
}

} // namespace

std::string WithoutBackticks(std::string text)
{
    std::erase(text, '`');
    return text;
}

std::vector<std::string> CellsOfTableLine(const std::string& line)
{
    std::vector<std::string> cells;
    std::string cell;
    for (std::size_t at = 1; at < line.size(); ++at) {
        if (line.compare(at, 2, "\\|") == 0) {
            cell += '|';
            ++at;
        } else if (line[at] == '|') {
            cells.push_back(Trimmed(cell));
            cell.clear();
        } else {
            cell += line[at];
        }
    }
    return cells;
}

std::vector<CodesRow> ReadCodesTable(const std::string& path)
{
    static const std::string Heading = "## ";
    std::vector<CodesRow> rows;
    std::ifstream file(path);
    std::string type;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(Heading)) {
            type = line.substr(Heading.size());
        }
        if (!line.starts_with("|") || line.starts_with("| ---") || line.starts_with("| Operation |")) {
            continue;
        }
        const std::vector<std::string> cells = CellsOfTableLine(line);
        if (cells.size() != Columns || Quoted(cells[0]).empty()) {
            throw std::runtime_error("no row of codes: " + line);
        }
        for (const std::string& operation : Quoted(cells[0])) {
            rows.push_back({type + "::" + operation, cells[1], WithoutBackticks(cells[2]), cells[3], cells[4]});
        }
    }
    return rows;
}

} // namespace Morvik::sql::tests
