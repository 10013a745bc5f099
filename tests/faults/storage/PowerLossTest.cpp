#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "faults/storage/PowerLossVfs.h"
#include "faults/storage/WriteBatches.h"
#include "support/DatabaseFiles.h"
#include "support/SoakMode.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

using enum PowerLossVfs::Removals;

// The content of the file after the restart, the best first.
enum class Found {
    EverythingAcknowledged, // and possibly a last write that was not acknowledged
    TheLastWriteTakenBack,  // the acknowledged writes before the last one, and possibly a part of the last one
    AnythingElse,
};

// The settings of a database, the kind of its file system, and the worst result that they allow.
struct DurabilityMode {
    std::string name;
    std::string pragmas;
    PowerLossVfs::Removals removals = Lasting;
    Found worst = Found::EverythingAcknowledged;
};

struct RoundResult {
    Found found = Found::AnythingElse;
    bool unsyncedWritesWereLost = false;
    bool recovered = false; // a journal was rolled back, or a log replayed
    std::string description;
};

class PowerLossTest : public testing::TestWithParam<DurabilityMode> {
protected:
    // Writes until the power fails, and compares the content of the file with the acknowledged content.
    RoundResult RunRound(std::uint64_t seed)
    {
        DatabaseFiles().PutBack(m_path);
        m_earlier = m_expected = {{}};
        FuzzInput choices(seed);
        RoundResult result;
        {
            PowerLossVfs machine(choices, 1 + static_cast<int>(choices.Below(400)), GetParam().removals);
            WriteUntilTheLoss(machine, seed);
            result.unsyncedWritesWereLost = machine.ComeBack() > 0;
        }
        const DatabaseFiles left(m_path);
        try {
            const DatabaseContent content = ContentOf(m_path);
            const auto isIn = [&](const auto& states) { return std::ranges::find(states, content) != states.end(); };
            result.found = isIn(m_expected)  ? Found::EverythingAcknowledged
                           : isIn(m_earlier) ? Found::TheLastWriteTakenBack
                                             : Found::AnythingElse;
            result.description = Described(content) + "in place of\n" + Described(m_expected.front());
        } catch (const std::runtime_error& failure) {
            result.description = failure.what();
        }
        const DatabaseFiles recovered(m_path);
        const bool changed = left.contents.contains("") && left.contents.at("") != recovered.contents.at("");
        result.recovered = changed && (left.contents.contains("-journal") || left.contents.contains("-wal"));
        return result;
    }

private:
    void WriteUntilTheLoss(const PowerLossVfs& machine, std::uint64_t seed)
    {
        WriteBatches batches(seed);
        DatabaseApi facade;
        facade.OpenDatabase(m_path, false);
        // A small cache makes SQLite write into the database before the commit.
        facade.Execute("PRAGMA cache_size = 4;" + GetParam().pragmas);
        while (!machine.IsOut()) {
            const WriteBatch batch = batches.Next();
            const bool succeeded = batch.run(facade);
            if (!succeeded || machine.IsOut()) { // a result after the power failure reaches no caller
                EXPECT_TRUE(machine.IsOut()) << facade.GetLastErrorMsg();
                m_expected.insert(m_expected.end(), batch.states.begin(), batch.states.end());
                return;
            }
            if (batch.states.back() != m_expected.back()) { // a call that changes no row writes nothing
                m_earlier = {m_expected.back()};
                m_earlier.insert(m_earlier.end(), batch.states.begin(), batch.states.end());
            }
            m_expected = {batch.states.back()};
        }
    }

    TemporaryDirectory m_directory;
    std::string m_path = m_directory.File("round.db");

    // The states before and after the last acknowledged write.
    std::vector<DatabaseContent> m_earlier;

    // The acknowledged state, and the states that the last call may have left.
    std::vector<DatabaseContent> m_expected;
};

// The worst result must be found: otherwise its absence with other settings would prove nothing.
TEST_P(PowerLossTest, LosesNoMoreThanTheSettingsAllow)
{
    std::array<int, 3> found{};
    int roundsWithLoss = 0;
    int roundsWithRecovery = 0;

    for (const std::uint64_t seed : TestSeeds()) {
        for (int round = 0; round < Rounds(50, 500); ++round) {
            SCOPED_TRACE(Describe(seed) + ", round " + std::to_string(round));
            const RoundResult result = RunRound(seed + static_cast<std::uint64_t>(round));
            ASSERT_LE(result.found, GetParam().worst) << result.description;
            ++found.at(static_cast<std::size_t>(result.found));
            roundsWithLoss += result.unsyncedWritesWereLost ? 1 : 0;
            roundsWithRecovery += result.recovered ? 1 : 0;
        }
    }

    EXPECT_GT(found.at(static_cast<std::size_t>(GetParam().worst)), 0);
    EXPECT_GT(roundsWithLoss, 0);
    EXPECT_GT(roundsWithRecovery, 0);
    RecordProperty("power_cuts", found[0] + found[1] + found[2]);
    RecordProperty("with_lost_sectors", roundsWithLoss);
    RecordProperty("with_recovery", roundsWithRecovery);
    RecordProperty("without_the_last_write", found[1]);
    RecordProperty("with_more_lost_or_damaged", found[2]);
}

constexpr auto NameOf = [](const auto& tested) { return tested.param.name; };

INSTANTIATE_TEST_SUITE_P(
    Durable, PowerLossTest,
    testing::Values(DurabilityMode{"AsOpened", ""},
                    DurabilityMode{"DeletedJournalSyncedWithItsDirectory", "PRAGMA synchronous = EXTRA", AwaitingASync},
                    DurabilityMode{"TruncatedJournal", "PRAGMA journal_mode = TRUNCATE", AwaitingASync},
                    DurabilityMode{"WriteAheadLog", "PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 20",
                                   AwaitingASync}),
    NameOf);

// A commit removes the journal, and with the settings of a newly opened database nothing syncs the directory
// afterwards. If the file system does not make the removal durable by itself, the journal comes back and the last write
// is rolled back. Without any sync, writes are lost and files are damaged.
INSTANTIATE_TEST_SUITE_P(
    Lossy, PowerLossTest,
    testing::Values(DurabilityMode{"UnsyncedJournalRemoval", "", AwaitingASync, Found::TheLastWriteTakenBack},
                    DurabilityMode{"WithoutSyncs", "PRAGMA synchronous = OFF", Lasting, Found::AnythingElse}),
    NameOf);

} // namespace

} // namespace Morvik::sql::tests
