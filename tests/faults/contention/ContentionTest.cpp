#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "contention/ContendedFile.h"
#include "support/RawSqlite.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t Writers = 3;
constexpr std::size_t Readers = 2;

// Several processes on one file: an operation that cannot be done returns an error, and every acknowledged entry is in
// the file exactly once.
class ContentionTest : public ContendedFile {
protected:
    /// Runs writers and readers at the same time and collects their output.
    void Contend(const std::string& timeout)
    {
        const double seconds = Rounds(2, 60);
        std::vector<std::unique_ptr<ChildProcess>> contenders;
        for (std::size_t i = 0; i < Writers + Readers; ++i) {
            const std::string role = i < Writers ? "writer" : "reader";
            contenders.push_back(
                std::make_unique<ChildProcess>(Contender(role, std::to_string(i + 1), seconds, timeout)));
        }
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const ContenderReport report = Report(contenders[i]->Wait());
            refusals += report.refusals;
            if (i < Writers) {
                EXPECT_FALSE(report.entries.empty()) << "writer " << i + 1 << " never came in";
                writers.push_back(report);
            } else {
                EXPECT_GT(report.reads, 0) << "reader " << i + 1 << " never came in";
            }
        }
    }

    std::vector<ContenderReport> writers;
    int refusals = 0;
};

TEST_F(ContentionTest, RefusedProcessesAreToldAndNoEntryIsLostOrDoubled)
{
    Contend("0");

    EXPECT_GT(refusals, 0) << "nobody was in anybody's way";
    ExpectExactly(writers);
}

TEST_F(ContentionTest, ProcessesThatMayWaitAreNeverRefused)
{
    Contend("120000");

    EXPECT_EQ(refusals, 0);
    ExpectExactly(writers);
}

TEST_F(ContentionTest, ReadersBesideAWriteAheadLogSeeWholeChanges)
{
    ASSERT_EQ(RawSqlite(path).Value("PRAGMA journal_mode = WAL"), "'wal'");

    Contend("0");

    EXPECT_GT(refusals, 0) << "nobody was in anybody's way";
    ExpectExactly(writers);
}

} // namespace

} // namespace Morvik::sql::tests
