#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "docs/codes/DocumentTable.h"
#include "docs/codes/Situation.h"

namespace Morvik::sql::tests {

namespace {

// Checks that docs/codes.md and the library agree: each row's situation is created here, and the result is compared
// with the row.

/// The situations by operation and name, as in "SqlTable::Open: the connection is closed".
const std::map<std::string, Run>& Registered()
{
    static const std::map<std::string, Run> All = [] {
        std::map<std::string, Run> all;
        for (const auto& page : {OpeningSituations, TableSituations, WritingSituations, ReadingSituations,
                                 CommandSituations, CursorSituations}) {
            for (const Situation& situation : page()) {
                const auto [key, added] = all.emplace(situation.operation + ": " + situation.name, situation.run);
                if (!added) {
                    throw std::logic_error("registered twice: " + key->first);
                }
            }
        }
        return all;
    }();
    return All;
}

/// One row of the document, for one of the operations in that row.
struct CodesRow {
    std::string key;
    std::string returned;
    std::string code;
    std::string message;

    friend void PrintTo(const CodesRow& row, std::ostream* stream) { *stream << row.key; }
};

std::vector<CodesRow> CodesRows()
{
    std::vector<CodesRow> rows;
    for (const std::vector<std::string>& cells : TableRows(TKOSQLLITE_CODES_DOCUMENT)) {
        if (cells.size() != 6) {
            throw std::runtime_error("a row of codes has not 5 cells: " + cells.at(1));
        }
        std::string operations = WithoutBackticks(cells[1]) + ", ";
        for (std::size_t end = operations.find(", "); end != std::string::npos; end = operations.find(", ")) {
            const std::string key = cells[0] + "::" + operations.substr(0, end) + ": " + cells[2];
            rows.push_back({key, WithoutBackticks(cells[3]), cells[4], cells[5]});
            operations.erase(0, end + 2);
        }
    }
    return rows;
}

const std::string Sqlites = "SQLite's";

/// The cell is "SQLite's", "SQLite's, 5", "unchanged" or a number. Only "SQLite's" and a number may be combined.
int ExpectedCode(const std::string& cell, const SituationResult& outcome)
{
    if (cell == "unchanged") {
        EXPECT_NE(outcome.before, CodeAndMessage()) << "an object without an error shows no change";
        return outcome.before.code;
    }
    if (!cell.starts_with(Sqlites)) {
        return std::stoi(cell);
    }
    if (!outcome.raw) {
        ADD_FAILURE() << "raw SQLite was not called";
        return 0;
    }
    EXPECT_NE(outcome.raw->code, 0);
    if (cell != Sqlites) {
        EXPECT_EQ(outcome.raw->code, std::stoi(cell.substr(Sqlites.size() + 1))) << "SQLite returns another code";
    }
    return outcome.raw->code;
}

/// The cell is "SQLite's", "unchanged", or texts in quotes and names of values, joined by " + ".
std::string ExpectedMessage(const std::string& cell, const SituationResult& outcome)
{
    if (cell == "unchanged") {
        return outcome.before.message;
    }
    if (cell == Sqlites) {
        return outcome.raw ? outcome.raw->message : "(raw SQLite was not called)";
    }
    std::string message;
    for (std::size_t begin = 0; begin < cell.size();) {
        const bool quoted = cell[begin] == '"';
        const std::size_t end = std::min(quoted ? cell.find('"', begin + 1) + 1 : cell.find(" + ", begin), cell.size());
        const std::string part = cell.substr(begin, end - begin);
        message += quoted ? part.substr(1, part.size() - 2) : outcome.names.at(part);
        begin = end + (end < cell.size() ? 3 : 0);
    }
    return message;
}

std::string ExpectedReturn(std::string cell, const SituationResult& outcome)
{
    if (const std::size_t at = cell.find(Sqlites); at != std::string::npos && outcome.raw) {
        cell.replace(at, Sqlites.size(), std::to_string(outcome.raw->code));
    }
    return cell;
}

class CodesTableTest : public testing::TestWithParam<CodesRow> {};

TEST_P(CodesTableTest, RowHasTheResultCodeAndMessage)
{
    const CodesRow& row = GetParam();
    const auto registered = Registered().find(row.key);
    ASSERT_NE(registered, Registered().end()) << "no situation for this row: " << row.key;

    const SituationResult outcome = registered->second();

    EXPECT_EQ(outcome.returned, ExpectedReturn(row.returned, outcome));
    EXPECT_EQ(outcome.after.code, ExpectedCode(row.code, outcome));
    EXPECT_EQ(outcome.after.message, ExpectedMessage(row.message, outcome));
}

/// "SqlDatabaseOpenTheFileIsADirectory"
std::string NameOfRow(const testing::TestParamInfo<CodesRow>& row)
{
    std::string name;
    bool capital = true;
    for (const char letter : row.param.key) {
        const auto byte = static_cast<unsigned char>(letter);
        if (std::isalnum(byte) != 0) {
            name += static_cast<char>(capital ? std::toupper(byte) : byte);
        } else if (letter == '+') {
            name += "Plus";
        }
        capital = std::isalnum(byte) == 0;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Rows, CodesTableTest, testing::ValuesIn(CodesRows()), NameOfRow);

TEST(CodesDocumentTest, HasARowForEverySituation)
{
    std::set<std::string> rows;
    for (const CodesRow& row : CodesRows()) {
        rows.insert(row.key);
    }

    for (const auto& [key, run] : Registered()) {
        EXPECT_TRUE(rows.contains(key)) << key;
    }
}

} // namespace

} // namespace Morvik::sql::tests
