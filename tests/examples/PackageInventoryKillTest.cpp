#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>

#include "examples/InventoryTest.h"
#include "support/KilledProgram.h"

namespace Morvik::sql::tests {

namespace {

using InventoryKillTest = InventoryTest;

TEST_F(InventoryKillTest, KillAtAnyMomentOfASecondRunLeavesOneWholeInventory)
{
    constexpr int Kills = 30;
    constexpr int Attempts = 300;
    ASSERT_THAT(RunOn(ManyPackages(1600, "2.0")), SucceededQuietly());
    const std::string later = WholeInventory();
    std::filesystem::remove(m_database);
    ASSERT_THAT(RunOn(ManyPackages(1500, "1.0")), SucceededQuietly());
    const std::string earlier = WholeInventory();
    ASSERT_NE(later, earlier);
    const std::string earlierFile = FileContent(m_database);
    WriteFile(StatusFile(), ManyPackages(1600, "2.0"));
    const std::chrono::microseconds duration = DurationOf(Command({StatusFile()}));

    int killed = 0;
    int killedWhileWriting = 0;
    std::mt19937 random(20240229);
    std::uniform_int_distribution<long long> moment(0, duration.count());
    for (int attempt = 0; attempt < Attempts && (killed < Kills || killedWhileWriting == 0); ++attempt) {
        WriteFile(m_database, earlierFile);
        const ChildResult result = RunAndKill(Command({StatusFile()}), std::chrono::microseconds(moment(random)));
        killed += result.signal == SIGKILL ? 1 : 0;
        killedWhileWriting += LeftAJournal(m_database) ? 1 : 0;

        const std::string left = WholeInventory();

        ASSERT_TRUE(left == earlier || left == later) << left;
    }

    EXPECT_GE(killed, Kills);
    EXPECT_GT(killedWhileWriting, 0) << "no kill fell between the first write and the commit";
}

} // namespace

} // namespace Morvik::sql::tests
