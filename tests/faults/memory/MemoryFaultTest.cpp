#include <gmock/gmock.h>
#include <sqlite3.h>
#include <unistd.h>

#include <optional>
#include <ostream>
#include <tuple>

#include "Expectation.h"
#include "Scenario.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

// Sync calls do nothing here: these tests do not check what reaches the disk, and waiting for it would take most of the
// time.
extern "C" int fsync(int)
{
    return 0;
}

extern "C" int fdatasync(int)
{
    return 0;
}

namespace Morvik::sql::tests {

namespace {

ScenarioList AllScenarios()
{
    ScenarioList all;
    AddOpeningScenarios(all);
    AddCommandScenarios(all);
    AddCursorScenarios(all);
    AddMoveScenarios(all);
    AddTableScenarios(all);
    AddRowScenarios(all);
    return all;
}

using Parameters = std::tuple<Scenario, Memory>;

std::string NameOf(const testing::TestParamInfo<Parameters>& info)
{
    const auto& [scenario, memory] = info.param;
    return scenario.name + (memory == Memory::OfSqlite ? "WithoutSqliteMemory" : "WithoutNew");
}

class MemoryFaultTest : public testing::TestWithParam<Parameters> {
protected:
    static void SetUpTestSuite() { WrapSqliteAllocator(); }

    MemoryFaultTest()
    {
        RawSqlite(path).Execute(
            "PRAGMA page_size = 1024;"
            "CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT, weight REAL CHECK (weight >= 0), picture BLOB);"
            "CREATE INDEX by_name ON t (name);"
            "CREATE TABLE room (name TEXT);"
            "INSERT INTO room VALUES ('kitchen'), ('hall');"
            "INSERT INTO t VALUES (1, 'door', 0.5, x'0041'), (3, NULL, NULL, zeroblob(3)), (2, '" +
            AllocatedText + "', 1.5, CAST('" + AllocatedText + "' AS BLOB))");
        fresh = DatabaseFiles(path);
    }

    void SetUp() override
    {
        SCOPED_TRACE("with memory"); // reserves memory that later traces use again
        expected.emplace(scenario, memory, path, fresh, contents);
    }

    /// Returns whether an allocation failed.
    bool FailAfter(int succeeding)
    {
        fresh.PutBack(path);
        Subject subject(path);
        scenario.arrange(subject);
        subject.ForgetWhatWasRead();

        const Attempt attempt = ActWithout(memory, course, succeeding, scenario, subject);

        SCOPED_TRACE(testing::Message() << "after " << succeeding << " allocations: " << attempt);
        expected->ExpectReport(attempt);
        expected->ExpectRead(attempt, subject);
        DatabaseContent content;
        if (!scenario.allocations.mayStayLocked || course == Course::UntilDestroyed) {
            content = ContentOf(subject);
            expected->ExpectContent(attempt, content);
        }
        if (course != Course::UntilDestroyed) {
            expected->ExpectAgain(attempt, subject);
            subject.DestroyObjects();
            expected->ExpectContentAgain(attempt, content, ContentOf(subject));
        }
        return attempt.fired;
    }

    /// Returns how many allocations failed.
    int FailEveryAllocation()
    {
        int failures = 0;
        for (bool fired = true; fired && !HasFailure(); failures += fired ? 1 : 0) {
            const std::size_t before = LiveBytesOfNew() - bytesOfContents;
            const sqlite3_int64 sqliteBefore = sqlite3_memory_used();
            fired = FailAfter(failures);
            if (!HasFailure()) { // the message of a failure would count as leaked memory
                EXPECT_EQ(LiveBytesOfNew() - bytesOfContents, before) << "leaked after " << failures;
                EXPECT_EQ(sqlite3_memory_used(), sqliteBefore) << "leaked after " << failures;
            }
        }
        return failures;
    }

    /// The content of the subject's file. Counts the memory that the result takes in the cache.
    const DatabaseContent& ContentOf(const Subject& subject)
    {
        const std::size_t before = LiveBytesOfNew();
        const DatabaseContent& content = contents.Of(subject.path);
        bytesOfContents += LiveBytesOfNew() - before;
        return content;
    }

    const Scenario& scenario = std::get<Scenario>(GetParam());
    const Memory memory = std::get<Memory>(GetParam());
    Course course = Course::Once;

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseFiles fresh;
    ContentCache contents;
    std::size_t bytesOfContents = 0;
    std::optional<Expectation> expected;
};

TEST_P(MemoryFaultTest, EveryFailedAllocationIsReportedAndNothingIsLost)
{
    const Allocations& allocations = scenario.allocations;
    const int least = memory == Memory::OfSqlite ? allocations.leastOfSqlite : allocations.leastOfNew;
    constexpr std::pair<Course, const char*> Courses[] = {
        {Course::Once, "once"}, {Course::ForEver, "forEver"}, {Course::UntilDestroyed, "untilDestroyed"}};

    int failedAllocations = 0;

    for (const auto& [each, name] : Courses) {
        course = each;
        const int failures = FailEveryAllocation();

        SCOPED_TRACE(name);
        ASSERT_FALSE(HasFailure());
        ASSERT_GE(failures, least);
        ASSERT_TRUE(least > 0 || failures == 0) << failures;
        failedAllocations += failures;
    }
    RecordProperty("failed_allocations", failedAllocations);
    EXPECT_THAT(expected->UnusedAllowances(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryFaultTest,
                         testing::Combine(testing::ValuesIn(AllScenarios()),
                                          testing::Values(Memory::OfSqlite, Memory::OfNew)),
                         NameOf);

} // namespace

void PrintTo(const Scenario& scenario, std::ostream* stream)
{
    *stream << scenario.name;
}

} // namespace Morvik::sql::tests
