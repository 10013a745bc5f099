#include <map>
#include <regex>
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
        static const std::regex Comma(", ");
        const std::string operations = WithoutBackticks(cells[1]);
        for (std::sregex_token_iterator operation(operations.begin(), operations.end(), Comma, -1), end;
             operation != end; ++operation) {
            const std::string key = cells[0] + "::" + operation->str() + ": " + cells[2];
            rows.push_back({key, WithoutBackticks(cells[3]), cells[4], cells[5]});
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
    if (cell == Sqlites) {
        return outcome.raw.code;
    }
    const bool both = cell.starts_with(Sqlites);
    const int code = std::stoi(both ? cell.substr(Sqlites.size() + 1) : cell);
    EXPECT_TRUE(!both || outcome.raw.code == code) << "SQLite returns " << outcome.raw.code;
    return code;
}

/// The cell is "SQLite's", "unchanged", or texts in quotes and names of values, joined by " + ".
std::string ExpectedMessage(const std::string& cell, const SituationResult& outcome)
{
    if (cell == "unchanged") {
        return outcome.before.message;
    }
    if (cell == Sqlites) {
        return outcome.raw.message;
    }
    static const std::regex Part(R"part("([^"]*)"|([^ +]+))part");
    std::string message;
    for (std::sregex_iterator part(cell.begin(), cell.end(), Part), end; part != end; ++part) {
        message += (*part)[2].matched ? outcome.names.at(part->str(2)) : part->str(1);
    }
    return message;
}

std::string ExpectedReturn(std::string cell, const SituationResult& outcome)
{
    if (const std::size_t at = cell.find(Sqlites); at != std::string::npos) {
        cell.replace(at, Sqlites.size(), std::to_string(outcome.raw.code));
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

    if ((row.returned + row.code + row.message).find(Sqlites) != std::string::npos) {
        EXPECT_NE(outcome.raw.code, 0) << "raw SQLite does not fail";
    }
    EXPECT_EQ(outcome.returned, ExpectedReturn(row.returned, outcome));
    EXPECT_EQ(outcome.after.code, ExpectedCode(row.code, outcome));
    EXPECT_EQ(outcome.after.message, ExpectedMessage(row.message, outcome));
}

INSTANTIATE_TEST_SUITE_P(Rows, CodesTableTest, testing::ValuesIn(CodesRows()),
                         [](const auto& row) { return ParameterName(row.param.key); });

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
