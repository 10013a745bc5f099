#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "faults/storage/PowerLossVfs.h"
#include "faults/storage/WriteBatches.h"
#include "support/DatabaseFiles.h"
#include "support/SoakMode.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

using Removals = PowerLossVfs::Removals;

// The settings of a database, and the kind of its file system.
struct DurabilityMode {
    std::string name;
    std::string pragmas;
    Removals removals = Removals::Lasting;
};

// What is found after the restart.
enum class Found {
    EverythingAcknowledged, // and all or nothing of the last write
    TheLastWriteTakenBack,  // and everything before the last write
    AnythingElse,
};

struct RoundResult {
    Found found = Found::AnythingElse;
    bool unsyncedWritesWereLost = false;
    bool recovered = false; // a journal was rolled back, or a log replayed
    std::string description;
};

class PowerLossTest : public testing::Test {
protected:
    // Writes until the power fails, and checks what is left.
    RoundResult RunRound(const DurabilityMode& mode, std::uint64_t seed) const
    {
        const std::string path = m_directory.File("round.db");
        DatabaseFiles().PutBack(path);
        FuzzInput choices(seed);
        WriteBatches batches(seed);
        std::vector<DatabaseContent> earlier{{}};
        // The acknowledged state, and the states that the last call may have left.
        std::vector<DatabaseContent> expected{{}};
        int lostSectors = 0;
        {
            PowerLossVfs machine(choices, 1 + static_cast<int>(choices.Below(400)), mode.removals);
            {
                DatabaseApi facade;
                facade.OpenDatabase(path, false);
                facade.Execute(mode.pragmas);
                while (!machine.IsOut()) {
                    const WriteBatch batch = batches.Next();
                    const bool succeeded = batch.run(facade);
                    if (!succeeded || machine.IsOut()) { // a result after the power failure reaches no caller
                        EXPECT_TRUE(machine.IsOut()) << facade.GetLastErrorMsg();
                        expected.insert(expected.end(), batch.states.begin(), batch.states.end());
                        break;
                    }
                    if (batch.states.back() != expected.back()) { // a call that changes no row writes nothing
                        earlier = {expected.back()};
                        earlier.insert(earlier.end(), batch.states.begin(), batch.states.end());
                    }
                    expected = {batch.states.back()};
                }
            }
            lostSectors = machine.ComeBack();
        }

        RoundResult outcome;
        outcome.unsyncedWritesWereLost = lostSectors > 0;
        const DatabaseFiles left(path);
        try {
            const DatabaseContent content = ContentOf(path);
            const auto has = [&](const auto& states) { return std::ranges::find(states, content) != states.end(); };
            outcome.found = has(expected)  ? Found::EverythingAcknowledged
                            : has(earlier) ? Found::TheLastWriteTakenBack
                                           : Found::AnythingElse;
            outcome.description = Described(content) + "in place of\n" + Described(expected.front());
        } catch (const std::runtime_error& failure) {
            outcome.description = failure.what();
        }
        const DatabaseFiles recovered(path);
        const bool changed = left.contents.contains("") && left.contents.at("") != recovered.contents.at("");
        outcome.recovered = changed && (left.contents.contains("-journal") || left.contents.contains("-wal"));
        return outcome;
    }

    /// Calls `check` with the outcome of each round of each seed.
    template <typename Check>
    void RunRounds(const DurabilityMode& mode, Check check) const
    {
        RecordProperty("power_cuts", static_cast<int>(TestSeeds().size()) * Rounds(50, 500));
        for (const std::uint64_t seed : TestSeeds()) {
            for (int round = 0; round < Rounds(50, 500) && !HasFatalFailure(); ++round) {
                SCOPED_TRACE(Describe(seed) + ", round " + std::to_string(round));
                check(RunRound(mode, seed + static_cast<std::uint64_t>(round)));
            }
        }
    }

private:
    TemporaryDirectory m_directory;
};

class DurableKeepingTest : public PowerLossTest, public testing::WithParamInterface<DurabilityMode> {};

TEST_P(DurableKeepingTest, KeepsAcknowledgedWritesAndNoIncompleteWrite)
{
    int roundsWithLoss = 0;
    int roundsWithRecovery = 0;

    RunRounds(GetParam(), [&](const RoundResult& outcome) {
        ASSERT_EQ(outcome.found, Found::EverythingAcknowledged) << outcome.description;
        roundsWithLoss += outcome.unsyncedWritesWereLost ? 1 : 0;
        roundsWithRecovery += outcome.recovered ? 1 : 0;
    });

    EXPECT_GT(roundsWithLoss, 0);
    EXPECT_GT(roundsWithRecovery, 0);
    RecordProperty("with_lost_sectors", roundsWithLoss);
    RecordProperty("with_recovery", roundsWithRecovery);
}

// A small cache makes SQLite write into the database before the commit.
INSTANTIATE_TEST_SUITE_P(
    Storage, DurableKeepingTest,
    testing::Values(DurabilityMode{"AsOpened", "PRAGMA cache_size = 4"},
                    DurabilityMode{"DeletedJournalSyncedWithItsDirectory",
                                   "PRAGMA cache_size = 4; PRAGMA synchronous = EXTRA", Removals::AwaitingASync},
                    DurabilityMode{"TruncatedJournal", "PRAGMA cache_size = 4; PRAGMA journal_mode = TRUNCATE",
                                   Removals::AwaitingASync},
                    DurabilityMode{"WriteAheadLog",
                                   "PRAGMA journal_mode = WAL; PRAGMA cache_size = 4; PRAGMA wal_autocheckpoint = 20",
                                   Removals::AwaitingASync}),
    [](const auto& tested) { return tested.param.name; });

// A commit removes the journal, and with the settings of a newly opened database nothing syncs the directory
// afterwards. If the file system does not make the removal durable by itself, the journal comes back and the last write
// is rolled back.
TEST_F(PowerLossTest, UnsyncedJournalRemovalUndoesTheLastWriteCompletely)
{
    const DurabilityMode mode{"", "PRAGMA cache_size = 4", Removals::AwaitingASync};
    int takenBack = 0;

    RunRounds(mode, [&](const RoundResult& outcome) {
        ASSERT_NE(outcome.found, Found::AnythingElse) << outcome.description;
        takenBack += outcome.found == Found::TheLastWriteTakenBack ? 1 : 0;
    });

    EXPECT_GT(takenBack, 0);
    RecordProperty("without_the_last_write", takenBack);
}

// Proves that the rounds can find a loss: without syncs, data is lost.
TEST_F(PowerLossTest, WithoutSyncsTheSameRoundsFindLossAndDamage)
{
    const DurabilityMode mode{"", "PRAGMA cache_size = 4; PRAGMA synchronous = OFF", Removals::Lasting};
    int found = 0;

    RunRounds(mode,
              [&](const RoundResult& outcome) { found += outcome.found == Found::EverythingAcknowledged ? 0 : 1; });

    EXPECT_GT(found, 0);
    RecordProperty("with_loss_or_damage_in_the_control", found);
}

} // namespace

} // namespace Morvik::sql::tests
