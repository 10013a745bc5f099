#include "contention/ContendedFile.h"

#include <sstream>

#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

ContendedFile::ContendedFile()
{
    RawSqlite(path).Execute("CREATE TABLE entry (writer INTEGER, number INTEGER, amount INTEGER);"
                            "CREATE TABLE balance (amount INTEGER);"
                            "INSERT INTO balance VALUES (0)");
}

std::vector<std::string> ContendedFile::Contender(const std::string& role, const std::string& which, double seconds,
                                                  const std::string& timeout) const
{
    return {TKOSQLLITE_CONTENDER, role, path, which, std::to_string(seconds), timeout};
}

ContenderReport ContendedFile::Report(const ChildResult& result)
{
    EXPECT_EQ(result.status, 0) << "signal " << result.signal << ": " << result.err;
    EXPECT_EQ(result.err, "");
    ContenderReport report;
    std::istringstream lines(result.out);
    for (std::string word; lines >> word;) {
        if (word == "entry") {
            lines >> report.entries.emplace_back();
        } else if (word == "read") {
            ++report.reads;
        } else {
            EXPECT_EQ(word, "refused");
            ++report.refusals;
        }
    }
    return report;
}

void ContendedFile::ExpectExactly(const std::vector<ContenderReport>& writers) const
{
    RawSqlite plain(path);
    EXPECT_EQ(plain.Value("PRAGMA integrity_check"), "'ok'");
    int balance = 0;
    for (std::size_t writer = 1; writer <= writers.size(); ++writer) {
        std::vector<int> numbers;
        for (const auto& row : plain.Rows("SELECT number, amount FROM entry WHERE writer = " + std::to_string(writer) +
                                          " ORDER BY rowid")) {
            numbers.push_back(std::stoi(row.at(0)));
            balance += std::stoi(row.at(1));
        }
        EXPECT_EQ(numbers, writers[writer - 1].entries) << "of writer " << writer;
    }
    EXPECT_EQ(
        plain.Value("SELECT count(*) FROM entry WHERE writer NOT BETWEEN 1 AND " + std::to_string(writers.size())),
        "0");
    EXPECT_EQ(plain.Value("SELECT amount FROM balance"), std::to_string(balance));
}

} // namespace Morvik::sql::tests
