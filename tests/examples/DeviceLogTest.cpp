#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "examples/ExampleProgram.h"
#include "examples/StatusText.h"
#include "support/PlainSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;

class DeviceLogTest : public testing::Test {
protected:
    std::vector<std::string> Command(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"--database", m_database});
        return ExampleCommand("device_log", arguments);
    }

    std::string Answer(const std::string& sql) const { return AnswerOfSqlite3(m_database, sql); }

    // Waits until the log holds `count` samples, which must not take forever.
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
    std::string m_database = m_directory.File("missing/directories/log.db");
};

TEST_F(DeviceLogTest, TakesSamplesOfThisMachine)
{
    std::ifstream memory("/proc/meminfo");
    std::string name;
    long long kibibytes = 0;
    ASSERT_TRUE(memory >> name >> kibibytes);
    const std::string before = std::to_string(std::time(nullptr));

    const ChildResult result = RunChild(Command({"--samples", "3", "--interval", "0.05"}));

    EXPECT_THAT(result, SucceededQuietly());
    const std::string after = std::to_string(std::time(nullptr));
    EXPECT_EQ(Answer("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(Answer("SELECT count(*) FROM sample WHERE typeof(time) = 'integer' AND time BETWEEN " + before + " AND " +
                     after),
              "3");
    EXPECT_EQ(Answer("SELECT count(*) FROM sample WHERE memory_total = " + std::to_string(kibibytes / 1024) +
                     " AND memory_used BETWEEN 1 AND memory_total AND disk_used BETWEEN 0 AND 100 AND load >= 0 "
                     "AND uptime > 0 AND typeof(load) = 'real'"),
              "3");
    EXPECT_THAT(result.out, HasSubstr("3 samples taken; " + m_database + " holds 3\n  time "));
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 5);
}

TEST_F(DeviceLogTest, ShowsTheLastSamplesWithBarsOldestFirst)
{
    ASSERT_THAT(RunChild(Command({"--samples", "2", "--interval", "0.01"})), SucceededQuietly());
    Answer("UPDATE sample SET time = 0, load = 0.5 * id, memory_used = 50 * id, memory_total = 200, disk_used = 12.25, "
           "uptime = 5400");

    const ChildResult result = RunChild(Command({"--samples", "1"}));

    EXPECT_THAT(result, SucceededQuietly());
    const std::size_t first = result.out.find("1970-01-01");
    ASSERT_NE(first, std::string::npos) << result.out;
    const std::size_t second = result.out.find("1970-01-01", first + 1);
    ASSERT_NE(second, std::string::npos) << result.out;
    EXPECT_THAT(result.out.substr(first, second - first), HasSubstr(" 50 MiB  #####"));
    EXPECT_THAT(result.out.substr(first, second - first), HasSubstr(" 12.2 %   1.5 h\n"));
    EXPECT_THAT(result.out.substr(second), HasSubstr(" 100 MiB  ##########"));
}

TEST_F(DeviceLogTest, KeepsOnlyTheLastSamplesAlsoThoseOfEarlierRuns)
{
    ASSERT_THAT(RunChild(Command({"--samples", "5", "--interval", "0.01"})), SucceededQuietly());

    const ChildResult result = RunChild(Command({"--samples", "2", "--interval", "0.01", "--keep", "3"}));

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT group_concat(id) FROM sample"), "5,6,7");
    EXPECT_THAT(result.out, HasSubstr("2 samples taken; " + m_database + " holds 3\n"));
}

TEST_F(DeviceLogTest, SamplesForTheGivenMinutes)
{
    const ChildResult result = RunChild(Command({"--minutes", "0.01", "--interval", "0.2"}));

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT count(*) FROM sample"), "4");
}

class DeviceLogSignalTest : public DeviceLogTest, public testing::WithParamInterface<int> {};

TEST_P(DeviceLogSignalTest, StopsItWithEverySampleKept)
{
    ChildProcess program(Command({"--minutes", "60", "--interval", "0.05"}));
    AwaitSamples("2");

    program.Signal(GetParam());
    const ChildResult result = program.Wait();

    EXPECT_THAT(result, SucceededQuietly());
    const std::string samples = Answer("SELECT count(*) FROM sample");
    EXPECT_THAT(result.out, HasSubstr(samples + " samples taken, then stopped by " +
                                      (GetParam() == SIGTERM ? "SIGTERM" : "SIGINT") + "; " + m_database + " holds " +
                                      samples + "\n"));
    EXPECT_EQ(Answer("PRAGMA integrity_check"), "ok");
}

TEST_P(DeviceLogSignalTest, StopsItWithinALongInterval)
{
    ChildProcess program(Command({"--minutes", "60", "--interval", "3000"}));
    AwaitSamples("1");

    program.Signal(GetParam());
    const ChildResult result = program.Wait();

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT count(*) FROM sample"), "1");
}

INSTANTIATE_TEST_SUITE_P(Signals, DeviceLogSignalTest, testing::Values(SIGINT, SIGTERM),
                         [](const auto& signal) { return signal.param == SIGINT ? "Interrupt" : "Terminate"; });

TEST_F(DeviceLogTest, KillLeavesASoundLogThatTheNextRunContinues)
{
    ChildProcess program(Command({"--minutes", "60", "--interval", "0.01", "--keep", "4"}));
    AwaitSamples("4");
    program.Signal(SIGKILL);
    ASSERT_EQ(program.Wait().signal, SIGKILL);

    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n4");
    EXPECT_THAT(RunChild(Command({"--samples", "1", "--keep", "100"})), SucceededQuietly());
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n5");
}

TEST_F(DeviceLogTest, WaitsForAProgramThatReadsTheLog)
{
    ASSERT_THAT(RunChild(Command({"--samples", "1"})), SucceededQuietly());
    PlainSqlite reader(m_database);
    reader.Execute("BEGIN; SELECT * FROM sample");
    ChildProcess program(Command({"--samples", "1"}));
    const std::string journal = m_database + "-journal";
    for (int attempt = 0; attempt < 600 && !std::filesystem::exists(journal); ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_TRUE(std::filesystem::exists(journal)) << "the program did not come to write";

    reader.Execute("COMMIT");

    EXPECT_THAT(program.Wait(), SucceededQuietly());
    EXPECT_EQ(Answer("SELECT count(*) FROM sample"), "2");
}

TEST_F(DeviceLogTest, DatabaseOfAnotherProgramEndsInOneLineAndStaysAsItIs)
{
    m_database = m_directory.File("other.db");
    PlainSqlite(m_database).Execute("CREATE TABLE sample (weight REAL); INSERT INTO sample VALUES (2.5)");
    const std::string content = FileContent(m_database);

    const ChildResult result = RunChild(Command({"--samples", "1"}));

    EXPECT_THAT(result, FailedWithOneLine(1, "device_log", "it is the database of another program"));
    EXPECT_EQ(FileContent(m_database), content);
}

TEST_F(DeviceLogTest, FileThatIsNoDatabaseEndsInOneLineWithCodeAndMessage)
{
    m_database = m_directory.File("letter.txt");
    WriteFile(m_database, std::string(3000, 'x'));

    const ChildResult result = RunChild(Command({"--samples", "1"}));

    EXPECT_THAT(result, FailedWithOneLine(1, "device_log", "file is not a database (code 26)"));
}

TEST_F(DeviceLogTest, DirectoryThatTakesNoFilesEndsInOneLineWithCodeAndMessage)
{
    m_database = "/proc/log.db";

    const ChildResult result = RunChild(Command({"--samples", "1"}));

    EXPECT_THAT(result, FailedWithOneLine(1, "device_log", "unable to open database file (code 14)"));
}

TEST_F(DeviceLogTest, FullDiskEndsInOneLineAndLeavesTheEarlierSamples)
{
    ASSERT_THAT(RunChild(Command({"--samples", "2", "--interval", "0.01"})), SucceededQuietly());
    std::vector<std::string> command = {"sh", "-c", "ulimit -f 1 && exec \"$0\" \"$@\""};
    const std::vector<std::string> program = Command({"--samples", "1"});
    command.insert(command.end(), program.begin(), program.end());

    const ChildResult result = RunChild(command);

    EXPECT_THAT(result, FailedWithOneLine(1, "device_log", "disk I/O error (code 10)"));
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT count(*) FROM sample"), "ok\n2");
}

struct UsageCase {
    const char* name;
    std::vector<std::string> arguments;
    const char* complaint;
};

class DeviceLogUsageTest : public testing::TestWithParam<UsageCase> {};

TEST_P(DeviceLogUsageTest, EndsInOneLineAndStatusTwo)
{
    const ChildResult result = RunChild(ExampleCommand("device_log", GetParam().arguments));

    EXPECT_THAT(result, FailedWithOneLine(2, "device_log", GetParam().complaint));
}

INSTANTIATE_TEST_SUITE_P(
    CommandLines, DeviceLogUsageTest,
    testing::Values(UsageCase{"UnknownOption", {"--fast"}, "--fast is no option"},
                    UsageCase{"StrayWord", {"fast"}, "fast is no option"},
                    UsageCase{"NoValue", {"--keep"}, "--keep needs a value"},
                    UsageCase{"KeepNothing", {"--keep", "0"}, "--keep takes a whole number from 1 "},
                    UsageCase{"NoNumber", {"--samples", "3x"}, "not \"3x\""},
                    UsageCase{"NoInterval", {"--interval", "0"}, "--interval takes a number from 0.01 "},
                    UsageCase{"NotANumber", {"--minutes", "nan"}, "--minutes takes a number from 0 "},
                    UsageCase{"NegativeMinutes", {"--minutes", "-1"}, "--minutes takes a number from 0 "}),
    [](const auto& usage) { return usage.param.name; });

} // namespace

} // namespace Morvik::sql::tests
