#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>

#include "examples/ExampleProgram.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;

class DeviceLogTest : public testing::Test {
protected:
    std::vector<std::string> Command(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), m_database);
        return ExampleCommand("device_log", arguments);
    }

    std::string Answer(const std::string& sql) const { return AnswerOfSqlite3(m_database, sql); }

    void AwaitSamples(const std::string& count) const
    {
        for (int attempt = 0; attempt < 600; ++attempt) {
            if (Answer("SELECT count(*) >= " + count + " FROM sample") == "1") {
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        throw std::runtime_error("the log never held " + count + " samples");
    }

    TemporaryDirectory m_directory;
    std::string m_database = m_directory.File("missing directories/log.db");
};

TEST_F(DeviceLogTest, TakesSamplesOfThisMachine)
{
    const ChildResult result = RunChild(Command({"3", "0.05"}));

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, HasSubstr("Database: " + m_database + "\nSamples: 3 written, 3 kept\n"));
    const bool hasSensor = std::filesystem::exists("/sys/class/thermal/thermal_zone0/temp");
    EXPECT_EQ(Answer("SELECT count(*) FROM sample WHERE abs(time - strftime('%s', 'now')) < 600 "
                     "AND typeof(load) = 'real' AND load >= 0 AND memory_used > 0 AND typeof(temperature) = '" +
                     std::string(hasSensor ? "real" : "null") + "'"),
              "3");
}

TEST_F(DeviceLogTest, ShowsTheLastSamplesOldestFirst)
{
    ASSERT_THAT(RunChild(Command({"2", "0.01"})), SucceededQuietly());
    Answer("UPDATE sample SET time = 0, load = 0.5 * id, memory_used = 50 * id, temperature = NULL;"
           "UPDATE sample SET temperature = 41.5 WHERE id = 2");

    const ChildResult result = RunChild(Command({"1", "1"}));

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, testing::ContainsRegex("1970-01-01 ..:00:00   0.50     50 MiB         none\n"
                                                   "1970-01-01 ..:00:00   1.00    100 MiB       41.5 C\n"));
}

TEST_F(DeviceLogTest, KeepsOnlyTheLastSamplesOfAllRuns)
{
    ASSERT_THAT(RunChild(Command({"5", "0.01"})), SucceededQuietly());

    const ChildResult result = RunChild(Command({"2", "0.01", "3"}));

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT group_concat(id) FROM sample"), "5,6,7");
    EXPECT_THAT(result.out, HasSubstr("Samples: 2 written, 3 kept\n"));
}

class DeviceLogSignalTest : public DeviceLogTest, public testing::WithParamInterface<int> {};

TEST_P(DeviceLogSignalTest, StopsWithinTheIntervalAndKeepsItsSamples)
{
    ChildProcess program(Command({"1000", "3000"}));
    AwaitSamples("1");

    program.Signal(GetParam());
    const ChildResult result = program.Wait();

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, HasSubstr("Samples: 1 written, 1 kept\n"));
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n1");
}

TEST_P(DeviceLogSignalTest, StopsBetweenTwoWrites)
{
    ChildProcess program(Command({"100000", "0.001"}));
    AwaitSamples("2");

    program.Signal(GetParam());
    const ChildResult result = program.Wait();

    EXPECT_THAT(result, SucceededQuietly());
    const std::string samples = Answer("SELECT max(id) FROM sample");
    EXPECT_THAT(result.out, HasSubstr("Samples: " + samples + " written, "));
    EXPECT_EQ(Answer("PRAGMA integrity_check"), "ok");
}

INSTANTIATE_TEST_SUITE_P(Signals, DeviceLogSignalTest, testing::Values(SIGINT, SIGTERM),
                         [](const auto& signal) { return signal.param == SIGINT ? "Interrupt" : "Terminate"; });

TEST_F(DeviceLogTest, KillLeavesASoundLogThatTheNextRunContinues)
{
    ChildProcess program(Command({"100000", "0.01", "4"}));
    AwaitSamples("4");
    program.Signal(SIGKILL);
    ASSERT_EQ(program.Wait().signal, SIGKILL);

    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n4");
    EXPECT_THAT(RunChild(Command({"1", "1", "100"})), SucceededQuietly());
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n5");
}

TEST_F(DeviceLogTest, FullDiskKeepsTheEarlierSamples)
{
    ASSERT_THAT(RunChild(Command({"2", "0.01"})), SucceededQuietly());

    const ChildResult result = RunChild(WithFileSizeLimit(1, Command({"1", "1"})));

    EXPECT_THAT(result, FailedWithOneLine(1, "cannot write a sample: disk I/O error (code 10)"));
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n2");
}

TEST_F(DeviceLogTest, TextFileIsRejected)
{
    m_database = m_directory.File("letter.txt");
    WriteFile(m_database, std::string(3000, 'x'));

    EXPECT_THAT(RunChild(Command({"1", "1"})), FailedWithOneLine(1, "file is not a database (code 26)"));
}

TEST_F(DeviceLogTest, WrongArgumentsAreRejected)
{
    const std::string usage = "usage: device_log DATABASE SAMPLES SECONDS [KEEP]";

    EXPECT_THAT(RunChild(ExampleCommand("device_log", {})), FailedWithOneLine(2, usage));
    EXPECT_THAT(RunChild(ExampleCommand("device_log", {"--help", "1", "1"})), FailedWithOneLine(2, usage));
    EXPECT_THAT(RunChild(Command({"1", "1", "1", "1"})), FailedWithOneLine(2, usage));
    EXPECT_THAT(RunChild(Command({"3x", "1"})), FailedWithOneLine(2, "\"3x\" is not a number above 0"));
    EXPECT_THAT(RunChild(Command({"3", "nan"})), FailedWithOneLine(2, "\"nan\" is not a number"));
    EXPECT_THAT(RunChild(Command({"3", "0"})), FailedWithOneLine(2, "\"0\" is not a number"));
    EXPECT_THAT(RunChild(Command({"3", "1", "-1"})), FailedWithOneLine(2, "\"-1\" is not a number"));
    EXPECT_THAT(RunChild(Command({"1000001", "1"})), FailedWithOneLine(2, "\"1000001\" is not a number"));
    EXPECT_FALSE(std::filesystem::exists(m_database));
}

} // namespace

} // namespace Morvik::sql::tests
