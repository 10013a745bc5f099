#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <optional>
#include <ostream>
#include <tuple>

#include "Attempt.h"
#include "faults/ContentCache.h"
#include "support/Cells.h"
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

/// The allowances of a scenario, each of which must be used at least once.
class Allowances {
public:
    void Add(bool condition, const std::string& allowance)
    {
        if (condition) {
            m_used[allowance] = false;
        }
    }

    /// Returns whether the scenario has this allowance. Allocates nothing that stays allocated, because the test counts
    /// such memory.
    bool Use(const std::string& allowance)
    {
        const auto found = m_used.find(allowance);
        return found != m_used.end() && (found->second = true);
    }

    void ExpectAllUsed() const
    {
        for (const auto& [allowance, used] : m_used) {
            EXPECT_TRUE(used) << "never " << allowance;
        }
    }

private:
    std::map<std::string, bool> m_used;
};

const std::string StopsAfterFirstStep = "stops after the first step";
const std::string PassesUndone = "reports success with nothing done";
const std::string ThrowsForSqlite = "throws std::bad_alloc for SQLite";

std::string FailsWith(const AllowedError& error)
{
    return "fails with code " + std::to_string(error.code) + ", \"" + std::string(error.message) + '"';
}

class MemoryFaultTest : public testing::TestWithParam<std::tuple<Scenario, Memory>> {
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

    /// Runs the scenario twice while memory is available, so that the process also makes the allocations that it makes
    /// only once.
    void SetUp() override
    {
        SCOPED_TRACE("with memory"); // reserves memory that later traces use again
        Allow();
        fresh.PutBack(path);
        Subject subject(path);
        scenario.arrange(subject);
        before = ContentOf(subject);
        Act(subject);
        once = ContentOf(subject);
        readOnce = subject.WhatWasRead();
        rowsOnce = CellTexts(subject.data);
        Act(subject);
        readTwice = subject.WhatWasRead();
        subject.DestroyObjects();
        twice = ContentOf(subject);
    }

    void Allow()
    {
        const bool ofSqlite = memory == Memory::OfSqlite;
        if (allocations.firstStep && allocations.LeastOf(memory) > 0) {
            RawSqlite(path).Execute(*allocations.firstStep);
            afterFirstStep = contents.Of(path);
            allowances.Add(true, StopsAfterFirstStep);
        }
        for (const AllowedError& error : allocations.ErrorsOf(memory)) {
            allowances.Add(true, FailsWith(error));
        }
        allowances.Add(ofSqlite && allocations.mayPassUndone, PassesUndone);
        allowances.Add(ofSqlite && allocations.convertsText, ThrowsForSqlite);
    }

    /// Runs the scenario while memory is available.
    void Act(Subject& subject) const
    {
        subject.ForgetWhatWasRead();
        const Report report = scenario.act(subject);
        EXPECT_TRUE(report.Done()) << report.Code() << ", " << report.Message();
        ++subject.timesDone;
    }

    /// Returns whether an allocation failed.
    bool FailAfter(int succeeding)
    {
        fresh.PutBack(path);
        Subject subject(path);
        scenario.arrange(subject);
        subject.ForgetWhatWasRead();

        const Attempt attempt = ActWithout(memory, course, succeeding, scenario, subject);

        SCOPED_TRACE(testing::Message() << "after " << succeeding << " allocations: " << attempt.outcome << ", code "
                                        << attempt.report.Code() << ", \"" << attempt.report.Message() << '"');
        const bool done = attempt.outcome == Done;
        EXPECT_TRUE(MayReport(attempt));
        EXPECT_TRUE(attempt.fired || done);
        ExpectRead(done, subject);
        DatabaseContent left;
        if (!allocations.mayStayLocked || course == Course::UntilDestroyed) {
            left = ContentOf(subject);
            EXPECT_TRUE(MayLeave(done, left)) << Described(left);
        }
        if (course != Course::UntilDestroyed) {
            ActAgain(done, left, subject);
        }
        return attempt.fired;
    }

    bool MayReport(const Attempt& attempt)
    {
        if (attempt.outcome == BadAlloc) {
            return memory == Memory::OfNew || allowances.Use(ThrowsForSqlite);
        }
        return attempt.outcome == Done || (attempt.outcome == Failed && MayFailWith(attempt.report));
    }

    bool MayFailWith(const Report& report)
    {
        // A message ending in ": " is followed by a name.
        const auto matches = [&](const AllowedError& error) {
            return report.Code() == error.code &&
                   (report.Message() == error.message ||
                    (error.message.ends_with(": ") && report.Message().starts_with(error.message)));
        };
        const std::vector<AllowedError>& allowed = allocations.ErrorsOf(memory);
        if (const auto found = std::ranges::find_if(allowed, matches); found != allowed.end()) {
            return allowances.Use(FailsWith(*found));
        }
        return memory == Memory::OfSqlite && (matches({SQLITE_NOMEM, "out of memory"}) || matches({SQLITE_NOMEM, ""}));
    }

    /// A failed scenario may have read the first rows.
    void ExpectRead(bool done, const Subject& subject) const
    {
        if (done) {
            EXPECT_EQ(subject.WhatWasRead(), readOnce);
            return;
        }
        const std::vector<std::vector<std::string>> rows = CellTexts(subject.data);
        ASSERT_LE(rows.size(), rowsOnce.size());
        EXPECT_TRUE(std::equal(rows.begin(), rows.end(), rowsOnce.begin())) << subject.WhatWasRead();
    }

    bool MayLeave(bool done, const DatabaseContent& content)
    {
        if (done) {
            return content == once || (content == before && allowances.Use(PassesUndone));
        }
        return content == before || (content == afterFirstStep && allowances.Use(StopsAfterFirstStep));
    }

    /// Repeats the scenario with the same objects, after an attempt that left this content.
    void ActAgain(bool done, const DatabaseContent& left, Subject& subject)
    {
        subject.timesDone += done ? 1 : 0;
        Act(subject);
        EXPECT_EQ(subject.WhatWasRead(), done ? readTwice : readOnce);
        subject.DestroyObjects();
        const DatabaseContent& content = ContentOf(subject);
        const bool changedTwice = done && (allocations.mayStayLocked || left == once);
        EXPECT_TRUE(content == (changedTwice ? twice : once) || (left == afterFirstStep && content == twice))
            << Described(content);
    }

    /// Returns how many allocations failed.
    int FailEveryAllocation()
    {
        int failures = 0;
        for (bool fired = true; fired && !HasFailure(); failures += fired ? 1 : 0) {
            const std::size_t liveBefore = LiveBytesOfNew() - bytesOfContents;
            const sqlite3_int64 sqliteBefore = sqlite3_memory_used();
            fired = FailAfter(failures);
            if (!HasFailure()) { // the message of a failure would count as leaked memory
                EXPECT_EQ(LiveBytesOfNew() - bytesOfContents, liveBefore) << "leaked after " << failures;
                EXPECT_EQ(sqlite3_memory_used(), sqliteBefore) << "leaked after " << failures;
            }
        }
        return failures;
    }

    /// The content of the subject's file. Counts the memory that the result takes in the cache.
    const DatabaseContent& ContentOf(const Subject& subject)
    {
        const std::size_t liveBefore = LiveBytesOfNew();
        const DatabaseContent& content = contents.Of(subject.path);
        bytesOfContents += LiveBytesOfNew() - liveBefore;
        return content;
    }

    const Scenario& scenario = std::get<Scenario>(GetParam());
    const Allocations& allocations = scenario.allocations;
    const Memory memory = std::get<Memory>(GetParam());
    Course course = Course::Once;

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseFiles fresh;
    ContentCache contents;
    std::size_t bytesOfContents = 0;
    Allowances allowances;

    // The contents that the scenario leaves, and the data that it reads, when memory never fails.
    DatabaseContent before;
    DatabaseContent once;
    DatabaseContent twice;
    std::optional<DatabaseContent> afterFirstStep;
    std::string readOnce;
    std::string readTwice;
    std::vector<std::vector<std::string>> rowsOnce;
};

TEST_P(MemoryFaultTest, EveryFailedAllocationIsReportedAndNothingIsLost)
{
    const int least = allocations.LeastOf(memory);
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
    allowances.ExpectAllUsed();
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryFaultTest,
                         testing::Combine(testing::ValuesIn(AllScenarios()),
                                          testing::Values(Memory::OfSqlite, Memory::OfNew)),
                         [](const auto& tested) {
                             const bool ofSqlite = std::get<Memory>(tested.param) == Memory::OfSqlite;
                             return std::get<Scenario>(tested.param).name +
                                    (ofSqlite ? "WithoutSqliteMemory" : "WithoutNew");
                         });

} // namespace

void PrintTo(const Scenario& scenario, std::ostream* stream)
{
    *stream << scenario.name;
}

} // namespace Morvik::sql::tests
