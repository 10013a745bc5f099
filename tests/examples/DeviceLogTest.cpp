#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "examples/ExampleTest.h"

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;

class DeviceLogTest : public ExampleTest {
protected:
    DeviceLogTest() : ExampleTest("device_log") {}

    /// Sends the signal to the program when the log holds `samples` samples, and returns how the program ended.
    ChildResult RunUntilSignal(int signal, const std::string& samples, const std::vector<std::string>& arguments) const
    {
        ChildProcess child(Command(arguments));
        for (int attempt = 0; Answer("SELECT count(*) >= " + samples + " FROM sample") != "1"; ++attempt) {
            if (attempt == 600) {
                throw std::runtime_error("the log never held " + samples + " samples");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        child.Signal(signal);
        return child.Wait();
    }
};

TEST_F(DeviceLogTest, TakesSamplesOfThisMachine)
{
    const ChildResult result = Run({"3", "0.05"});

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, HasSubstr("Database: " + database + "\nSamples: 3 written, 3 kept\n"));
    const bool hasSensor = std::filesystem::exists("/sys/class/thermal/thermal_zone0/temp");
    EXPECT_EQ(Answer("SELECT count(*) FROM sample WHERE abs(time - strftime('%s', 'now')) < 600 "
                     "AND typeof(load) = 'real' AND load >= 0 AND memory_used > 0 AND typeof(temperature) = '" +
                     std::string(hasSensor ? "real" : "null") + "'"),
              "3");
}

TEST_F(DeviceLogTest, ShowsTheLastSamplesOldestFirst)
{
    ASSERT_THAT(Run({"2", "0.01"}), SucceededQuietly());
    Answer("UPDATE sample SET time = 0, load = 0.5 * id, memory_used = 50 * id, temperature = NULL;"
           "UPDATE sample SET temperature = 41.5 WHERE id = 2");

    const ChildResult result = Run({"1", "1"});

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, testing::ContainsRegex("1970-01-01 ..:00:00   0.50     50 MiB         none\n"
                                                   "1970-01-01 ..:00:00   1.00    100 MiB       41.5 C\n"));
}

TEST_F(DeviceLogTest, KeepsOnlyTheLastSamplesOfAllRuns)
{
    ASSERT_THAT(Run({"5", "0.01"}), SucceededQuietly());

    const ChildResult result = Run({"2", "0.01", "3"});

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT group_concat(id) FROM sample"), "5,6,7");
    EXPECT_THAT(result.out, HasSubstr("Samples: 2 written, 3 kept\n"));
}

/// Parameters: the signal, and a long or a short time between two samples.
class DeviceLogSignalTest : public DeviceLogTest, public testing::WithParamInterface<std::tuple<int, const char*>> {};

TEST_P(DeviceLogSignalTest, StopsAtOnceAndKeepsItsSamples)
{
    const auto [signal, seconds] = GetParam();

    const ChildResult result = RunUntilSignal(signal, "1", {"100000", seconds, "100000"});

    const std::string samples = Answer("SELECT max(id) FROM sample");
    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, HasSubstr("Samples: " + samples + " written, " + samples + " kept\n"));
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n" + samples);
}

INSTANTIATE_TEST_SUITE_P(Signals, DeviceLogSignalTest,
                         testing::Combine(testing::Values(SIGINT, SIGTERM), testing::Values("3000", "0.001")));

TEST_F(DeviceLogTest, KillLeavesAnIntactLogThatTheNextRunContinues)
{
    ASSERT_EQ(RunUntilSignal(SIGKILL, "4", {"100000", "0.01", "4"}).signal, SIGKILL);

    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n4");
    EXPECT_THAT(Run({"1", "1", "100"}), SucceededQuietly());
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n5");
}

TEST_F(DeviceLogTest, FullDiskKeepsTheEarlierSamples)
{
    ASSERT_THAT(Run({"2", "0.01"}), SucceededQuietly());

    const ChildResult result = RunOnAFullDisk(1, {"1", "1"});

    EXPECT_THAT(result, FailedWithOneLine(1, "cannot write a sample: disk I/O error (code 10)"));
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n2");
}

TEST_F(DeviceLogTest, WrongArgumentsAreRejected)
{
    ExpectUsage("usage: device_log DATABASE SAMPLES SECONDS [KEEP]", {"1", "1", "1", "1"});
    for (const auto& [wrong, arguments] :
         std::map<std::string, std::vector<std::string>>{{"3x", {"3x", "1"}},
                                                         {"nan", {"3", "nan"}},
                                                         {"0", {"3", "0"}},
                                                         {"-1", {"3", "1", "-1"}},
                                                         {"1000001", {"1000001", "1"}}}) {
        EXPECT_THAT(Run(arguments), FailedWithOneLine(2, '"' + wrong + "\" is not a number above 0"));
    }
    EXPECT_FALSE(std::filesystem::exists(database));
}

} // namespace

} // namespace Morvik::sql::tests
