#include "docs/codes/CodesTable.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>

#include "docs/codes/Situation.h"

namespace Morvik::sql::tests {

namespace {

using testing::IsEmpty;

// Checks that docs/codes.md and the library agree: each row's situation is created here, and the result is compared
// with the row.

std::string Key(const std::string& operation, const std::string& situation)
{
    return operation + ": " + situation;
}

using Register = std::map<std::string, Situation>;

const Register& Registered()
{
    static const Register All = [] {
        Register all;
        for (const auto& some : {OpeningSituations(), TableSituations(), CountingSituations(), WritingSituations(),
                                 UpdatingSituations(), ReadingSituations(), WalkingSituations(), ConnectionSituations(),
                                 CommandSituations(), BindingSituations(), CursorSituations(), ValueSituations()}) {
            for (const Situation& situation : some) {
                if (!all.emplace(Key(situation.operation, situation.name), situation).second) {
                    throw std::logic_error("registered twice: " + Key(situation.operation, situation.name));
                }
            }
        }
        return all;
    }();
    return All;
}

std::vector<CodesRow> Rows()
{
    return ReadCodesTable(TKOSQLLITE_CODES_DOCUMENT);
}

const std::string Sqlites = "SQLite's";

/// "SQLite's", "SQLite's, 5", "unchanged" or a number. Only "SQLite's" and a number may be combined.
int ExpectedCode(const std::string& cell, const Outcome& outcome)
{
    if (cell == "unchanged") {
        EXPECT_NE(outcome.before, Record()) << "a fresh record shows no change";
        return outcome.before.code;
    }
    if (!cell.starts_with(Sqlites)) {
        return std::stoi(cell);
    }
    if (!outcome.plain) {
        ADD_FAILURE() << "nobody asked SQLite";
        return 0;
    }
    EXPECT_NE(outcome.plain->code, 0);
    if (cell != Sqlites) {
        EXPECT_EQ(outcome.plain->code, std::stoi(cell.substr(Sqlites.size() + 1))) << "SQLite says otherwise";
    }
    return outcome.plain->code;
}

/// "SQLite's", "unchanged", or texts in quotes and names of values, joined by " + ".
std::string ExpectedMessage(const std::string& cell, const Outcome& outcome)
{
    if (cell == "unchanged") {
        return outcome.before.message;
    }
    if (cell == Sqlites) {
        return outcome.plain ? outcome.plain->message : "(nobody asked SQLite)";
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

std::string ExpectedReturn(std::string cell, const Outcome& outcome)
{
    if (const std::size_t at = cell.find(Sqlites); at != std::string::npos && outcome.plain) {
        cell.replace(at, Sqlites.size(), std::to_string(outcome.plain->code));
    }
    return cell;
}

class CodesTableTest : public testing::TestWithParam<CodesRow> {};

TEST_P(CodesTableTest, RowTellsWhatHappens)
{
    const CodesRow& row = GetParam();
    const auto registered = Registered().find(Key(row.operation, row.situation));
    ASSERT_NE(registered, Registered().end()) << "nobody brings about: " << Key(row.operation, row.situation);

    const Outcome outcome = registered->second.run();

    EXPECT_EQ(outcome.returned, ExpectedReturn(row.returned, outcome));
    EXPECT_EQ(outcome.after.code, ExpectedCode(row.code, outcome));
    EXPECT_EQ(outcome.after.message, ExpectedMessage(row.message, outcome));
}

/// "SqlDatabaseOpenTheFileIsADirectory"
std::string TestName(const testing::TestParamInfo<CodesRow>& row)
{
    std::string name;
    bool capital = true;
    for (const char letter : row.param.operation + " " + row.param.situation) {
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

INSTANTIATE_TEST_SUITE_P(Rows, CodesTableTest, testing::ValuesIn(Rows()), TestName);

TEST(CodesDocumentTest, HasARowForEverySituation)
{
    std::set<std::string> rows;
    for (const CodesRow& row : Rows()) {
        rows.insert(Key(row.operation, row.situation));
    }
    std::vector<std::string> withoutRow;
    for (const auto& [key, situation] : Registered()) {
        if (!rows.contains(key)) {
            withoutRow.push_back(key);
        }
    }

    EXPECT_THAT(withoutRow, IsEmpty());
}

} // namespace

} // namespace Morvik::sql::tests
