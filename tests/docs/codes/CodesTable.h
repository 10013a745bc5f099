#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// One row of the tables in docs/codes.md, for one of the operations in that row. Cells as in the document, without
/// backticks and with \| as |.
struct CodesRow {
    std::string operation; ///< with its class: "SqlDatabase::Open"
    std::string situation;
    std::string returned;
    std::string code;
    std::string message;

    friend void PrintTo(const CodesRow& row, std::ostream* stream)
    {
        *stream << row.operation << ": " << row.situation;
    }
};

/// The text as a reader of the document sees it.
std::string WithoutBackticks(std::string text);

/// The cells of one line of a table, without surrounding blanks and with \| as |.
std::vector<std::string> CellsOfTableLine(const std::string& line);

/// Every row of the document, in order; a row with several operations is returned once for each. Empty if there is no
/// such file. Throws std::runtime_error for a row with a wrong number of cells.
std::vector<CodesRow> ReadCodesTable(const std::string& path);

} // namespace Morvik::sql::tests
