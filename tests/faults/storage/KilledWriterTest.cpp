#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <random>
#include <set>

#include "faults/storage/WriteBatches.h"
#include "support/BuiltProgram.h"
#include "support/ChildProcess.h"
#include "support/DatabaseFiles.h"
#include "support/SoakMode.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

constexpr int Batches = 25;

struct DurabilityMode {
    std::string name;
    std::string pragmas;
};

class KilledWriterTest : public testing::TestWithParam<DurabilityMode> {
protected:
    std::vector<std::string> Command(std::uint64_t seed) const
    {
        return CommandLine(TKOSQLLITE_BATCH_WRITER,
                           {m_path, GetParam().pragmas, std::to_string(seed), std::to_string(Batches)});
    }

    // The contents that the writer may have left after this number of acknowledged batches.
    static std::vector<DatabaseContent> Expected(std::uint64_t seed, std::ptrdiff_t acknowledged)
    {
        WriteBatches batches(seed);
        std::vector<DatabaseContent> states{{}};
        for (std::ptrdiff_t batch = 0; batch < acknowledged; ++batch) {
            states = {batches.Next().states.back()};
        }
        std::ranges::copy(batches.Next().states, std::back_inserter(states));
        return states;
    }

    bool LeftSomethingToRecover() const
    {
        std::error_code absent;
        return LeftAJournal(m_path) || (std::filesystem::file_size(m_path + "-wal", absent) > 0 && !absent);
    }

    // Expects that the next process can continue to write.
    void ExpectToGoOnFrom(DatabaseContent content) const
    {
        DatabaseApi facade;
        EXPECT_TRUE(facade.OpenDatabase(m_path, false)) << facade.GetLastErrorMsg();
        EXPECT_TRUE(facade.Execute("CREATE TABLE later (id INTEGER); INSERT INTO later VALUES (7)"))
            << facade.GetLastErrorMsg();
        EXPECT_TRUE(facade.CloseDatabase());
        content["later"] = {{"7"}};
        EXPECT_EQ(ContentOf(m_path), content);
    }

    TemporaryDirectory m_directory;
    std::string m_path = m_directory.File("test.db");
};

TEST_P(KilledWriterTest, KeepsAcknowledgedWritesAndNoIncompleteWrite)
{
    const int kills = RunsEmulated() ? Rounds(5, 50) : Rounds(10, 100);
    int killed = 0;
    int killedInACall = 0;
    int recovered = 0;
    std::set<std::ptrdiff_t> moments;
    const std::uint64_t seed = TestSeeds().back();
    const std::chrono::microseconds duration = DurationOf(Command(seed));
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<long long> moment(0, duration.count());

    for (int attempt = 0; attempt < 10 * kills && (killed < kills || killedInACall == 0); ++attempt) {
        const std::uint64_t batchSeed = seed + static_cast<std::uint64_t>(attempt);
        SCOPED_TRACE(Describe(seed) + ", attempt " + std::to_string(attempt));
        DatabaseFiles().PutBack(m_path);
        const ChildResult result = RunAndKill(Command(batchSeed), std::chrono::microseconds(moment(random)));
        ASSERT_TRUE(result.signal == SIGKILL || result.status == 0) << result.status << ": " << result.err;
        const auto acknowledged = std::ranges::count(result.out, '\n') / 2;
        const bool inACall = result.out.ends_with("begin\n");
        const bool leftSomething = LeftSomethingToRecover();
        const std::vector<DatabaseContent> expected = Expected(batchSeed, acknowledged);

        const DatabaseContent content = ContentOf(m_path);

        ASSERT_NE(std::ranges::find(expected, content), expected.end()) << Described(content) << "in place of\n"
                                                                        << Described(expected.front());
        if (!inACall) {
            ASSERT_EQ(content, expected.front());
        }
        if (result.signal == SIGKILL) {
            ++killed;
            moments.insert(acknowledged);
            killedInACall += inACall ? 1 : 0;
            recovered += leftSomething ? 1 : 0;
            ExpectToGoOnFrom(content);
        }
    }

    EXPECT_GE(killed, kills);
    EXPECT_GT(killedInACall, 0);
    EXPECT_GT(moments.size(), 1U);
    RecordProperty("killed", killed);
    RecordProperty("killed_in_a_call", killedInACall);
    RecordProperty("with_recovery", recovered);
}

// A small cache makes SQLite write into the database before the commit.
INSTANTIATE_TEST_SUITE_P(Storage, KilledWriterTest,
                         testing::Values(DurabilityMode{"AsOpened", "PRAGMA cache_size = 4"},
                                         DurabilityMode{"WriteAheadLog",
                                                        "PRAGMA journal_mode = WAL; PRAGMA cache_size = 4"}),
                         [](const auto& tested) { return tested.param.name; });

} // namespace

} // namespace Morvik::sql::tests
