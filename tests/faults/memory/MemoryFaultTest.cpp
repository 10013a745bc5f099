#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <map>
#include <optional>
#include <tuple>

#include "Scenario.h"
#include "faults/ContentCache.h"
#include "support/OomInjector.h"
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
    AddTableScenarios(all);
    AddRowScenarios(all);
    return all;
}

/// How long allocations continue to fail after the first one that fails.
enum class Course {
    /// The next allocations succeed; then the scenario is repeated.
    Once,

    /// The next allocations also fail until the scenario ends; then it is repeated.
    ForEver,

    /// The next allocations also fail until every object is destroyed.
    UntilDestroyed
};

const std::string StopsAfterFirstStep = "stops after the first step";
const std::string PassesUndone = "reports success with nothing done";

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
        if (allocations.firstStep && least > 0) {
            RawSqlite(path).Execute(*allocations.firstStep);
            afterFirstStep = contents.Of(path);
            allowances[StopsAfterFirstStep] = false;
        }
        for (const AllowedError& error : errors) {
            allowances[FailsWith(error)] = false;
        }
        if (ofSqlite && allocations.mayPassUndone) {
            allowances[PassesUndone] = false;
        }
        fresh.PutBack(path);
        Subject subject(path);
        scenario.arrange(subject);
        before = ContentOf(subject);
        Act(subject);
        once = ContentOf(subject);
        readOnce = subject.WhatWasRead();
        Act(subject);
        readTwice = subject.WhatWasRead();
        subject.DestroyObjects();
        twice = ContentOf(subject);
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

        const auto [report, fired] = ActWithoutMemory(succeeding, subject);

        SCOPED_TRACE(testing::Message() << "after " << succeeding << " allocations: code " << report.Code() << ", \""
                                        << report.Message() << '"');
        const bool done = report.Done();
        EXPECT_TRUE(done || (fired && MayFailWith(report)));
        if (done) {
            EXPECT_EQ(subject.WhatWasRead(), readOnce);
        } else {
            EXPECT_TRUE(readOnce.starts_with(subject.RowsRead())) << "read other rows than the first:\n"
                                                                  << subject.RowsRead();
        }
        DatabaseContent left;
        if (!allocations.mayStayLocked || course == Course::UntilDestroyed) {
            left = ContentOf(subject);
            EXPECT_TRUE(MayLeave(done, left)) << Described(left);
        }
        if (course != Course::UntilDestroyed) {
            ActAgain(done, left, subject);
        }
        return fired;
    }

    /// Runs the scenario while memory fails after `succeeding` allocations. Also returns whether one failed.
    std::pair<Report, bool> ActWithoutMemory(int succeeding, Subject& subject) const
    {
        const OomInjector failing(succeeding, course == Course::Once ? FailureExtent::Once : FailureExtent::ForEver,
                                  memory);
        const auto act = [&] {
            try {
                return scenario.act(subject);
            } catch (const std::exception& thrown) {
                return Report(false, BadAlloc.code, thrown.what());
            }
        };
        const Report report = act();
        if (course == Course::UntilDestroyed) {
            subject.DestroyObjects();
        }
        return {report, failing.Fired()};
    }

    bool MayFailWith(const Report& report)
    {
        // A message ending in ": " is followed by a name.
        const auto matches = [&](const AllowedError& error) {
            return report.Code() == error.code && report.Message().starts_with(error.message) &&
                   (report.Message() == error.message || error.message.ends_with(": "));
        };
        if (const auto found = std::ranges::find_if(errors, matches); found != errors.end()) {
            return Use(FailsWith(*found));
        }
        return ofSqlite ? matches({SQLITE_NOMEM, "out of memory"}) || matches({SQLITE_NOMEM, ""}) : matches(BadAlloc);
    }

    /// Returns whether the scenario has this allowance. Allocates nothing that stays allocated, because the test counts
    /// such memory.
    bool Use(const std::string& allowance)
    {
        const auto found = allowances.find(allowance);
        return found != allowances.end() && (found->second = true);
    }

    bool MayLeave(bool done, const DatabaseContent& content)
    {
        if (done) {
            return content == once || (content == before && Use(PassesUndone));
        }
        return content == before || (content == afterFirstStep && Use(StopsAfterFirstStep));
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
    const bool ofSqlite = memory == Memory::OfSqlite;
    const int least = ofSqlite ? allocations.ofSqlite : allocations.ofNew;
    const std::vector<AllowedError>& errors = ofSqlite ? allocations.errorsOfSqlite : allocations.errorsOfNew;
    Course course = Course::Once;

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseFiles fresh;
    ContentCache contents;
    std::size_t bytesOfContents = 0;

    /// The allowances of the scenario, and whether each was used.
    std::map<std::string, bool> allowances;

    // The contents that the scenario leaves, and the data that it reads, when memory never fails.
    DatabaseContent before;
    DatabaseContent once;
    DatabaseContent twice;
    std::optional<DatabaseContent> afterFirstStep;
    std::string readOnce;
    std::string readTwice;
};

TEST_P(MemoryFaultTest, EveryFailedAllocationIsReportedAndNothingIsLost)
{
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
    for (const auto& [allowance, used] : allowances) {
        EXPECT_TRUE(used) << "never " << allowance;
    }
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

} // namespace Morvik::sql::tests
