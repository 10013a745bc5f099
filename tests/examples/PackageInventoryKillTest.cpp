#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <thread>

#include "examples/InventoryTest.h"

namespace Morvik::sql::tests {

namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

class InventoryKillTest : public InventoryTest {
protected:
    // A run writes both the database and, until it commits, the journal that takes its changes back.
    bool LeftAJournal() const
    {
        std::error_code absent;
        return std::filesystem::file_size(m_database + "-journal", absent) > 0 && !absent;
    }
};

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
    const auto begin = steady_clock::now();
    ASSERT_THAT(RunChild(Command({StatusFile()})), SucceededQuietly());
    const auto duration = std::chrono::duration_cast<microseconds>(steady_clock::now() - begin);

    int killed = 0;
    int killedWhileWriting = 0;
    std::mt19937 random(20240229);
    std::uniform_int_distribution<long long> moment(0, duration.count());
    for (int attempt = 0; attempt < Attempts && (killed < Kills || killedWhileWriting == 0); ++attempt) {
        WriteFile(m_database, earlierFile);
        ChildProcess program(Command({StatusFile()}));
        std::this_thread::sleep_for(microseconds(moment(random)));
        program.Signal(SIGKILL);
        killed += program.Wait().signal == SIGKILL ? 1 : 0;
        killedWhileWriting += LeftAJournal() ? 1 : 0;

        const std::string left = WholeInventory();

        ASSERT_TRUE(left == earlier || left == later) << left;
    }

    EXPECT_GE(killed, Kills);
    EXPECT_GT(killedWhileWriting, 0) << "no kill fell between the first write and the commit";
}

} // namespace

} // namespace Morvik::sql::tests
