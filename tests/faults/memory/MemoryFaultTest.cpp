#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <new>
#include <ostream>
#include <tuple>

#include "KnownContents.h"
#include "Scenario.h"
#include "support/Cells.h"
#include "support/ChildProcess.h"
#include "support/FailingAllocation.h"
#include "support/FailingSqliteMemory.h"
#include "support/PlainSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

/// Whose memory fails.
enum class Memory { OfSqlite, OfNew };

/// What happens after the first allocation that fails.
enum class Course {
    /// The next ones succeed; then the scenario is done again.
    Once,

    /// They fail too, until the scenario is over; then it is done again.
    ForEver,

    /// They fail too, until every object is destroyed.
    UntilDestroyed
};

enum class Outcome { Done, Refused, BadAlloc, OtherException };

struct Attempt {
    Outcome outcome = Outcome::OtherException;
    Report report;
    bool fired = false;
};

std::ostream& operator<<(std::ostream& stream, const Attempt& attempt)
{
    static constexpr std::string_view Names[] = {"done", "refused", "std::bad_alloc", "another exception"};
    return stream << Names[static_cast<int>(attempt.outcome)] << ", code " << attempt.report.Code() << ", \""
                  << attempt.report.Message() << '"';
}

/// What a scenario does where memory never fails.
struct Expectation {
    std::string before;
    std::string once;
    std::string twice;
    std::vector<std::string> afterFirstSteps;
    std::string readOnce;
    std::string readTwice;
    std::vector<std::vector<std::string>> rowsOnce;
};

std::vector<Scenario> AllScenarios()
{
    std::vector<Scenario> all;
    for (const auto& some :
         {ConnectionScenarios(), CommandScenarios(), CursorScenarios(), ValueScenarios(), FacadeScenarios(),
          FacadeTableScenarios(), FacadeRowScenarios(), FacadeReadScenarios(), RenderingScenarios()}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

using Parameters = std::tuple<Scenario, Memory, Course>;

std::string NameOf(const testing::TestParamInfo<Parameters>& info)
{
    const auto& [scenario, memory, course] = info.param;
    static constexpr std::string_view Courses[] = {"Once", "ForEver", "UntilDestroyed"};
    return scenario.name + (memory == Memory::OfSqlite ? "WithoutSqliteMemory" : "WithoutNew") +
           std::string(Courses[static_cast<int>(course)]);
}

class MemoryFaultTest : public testing::TestWithParam<Parameters> {
protected:
    static void SetUpTestSuite() { FailingSqliteMemory::Install(); }

    MemoryFaultTest()
    {
        PlainSqlite plain(path);
        plain.Execute(
            "PRAGMA page_size = 1024;"
            "CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT, weight REAL CHECK (weight >= 0), picture BLOB);"
            "CREATE INDEX by_name ON t (name);"
            "CREATE TABLE room (name TEXT);"
            "INSERT INTO room VALUES ('kitchen'), ('hall');"
            "INSERT INTO t VALUES (1, 'door', 0.5, x'0041'), (3, NULL, NULL, zeroblob(3))");
        plain.Execute("INSERT INTO t VALUES (2, '" + LongText + "', 1.5, CAST('" + LongText + "' AS BLOB))");
    }

    void SetUp() override
    {
        fresh = FileContent(path);
        SCOPED_TRACE("with memory"); // which makes the place for later ones, too
        WorkWithMemory();
    }

    void StartAfresh() const
    {
        std::filesystem::remove(path + "-journal");
        std::ofstream(path, std::ios::binary) << fresh;
    }

    /// Learns what to expect, and makes what a process makes once.
    void WorkWithMemory()
    {
        StartAfresh();
        Subject subject(path);
        scenario.arrange(subject);
        expected.before = contents.Of(subject.path);
        subject.ForgetWhatWasRead();
        const Report first = scenario.act(subject);
        ASSERT_TRUE(first.Done()) << first.Code() << ", " << first.Message();
        expected.once = contents.Of(subject.path);
        expected.readOnce = subject.WhatWasRead();
        expected.rowsOnce = CellTexts(subject.data);
        ++subject.timesDone;
        subject.ForgetWhatWasRead();
        ASSERT_TRUE(scenario.act(subject).Done());
        expected.readTwice = subject.WhatWasRead();
        subject.DestroyObjects();
        expected.twice = contents.Of(subject.path);

        StartAfresh();
        for (const std::string& statement : scenario.firstSteps) {
            PlainSqlite(path).Execute(statement);
            expected.afterFirstSteps.push_back(contents.Of(path));
        }
    }

    template <typename Failing>
    Attempt ActWithout(Subject& subject, int succeeding) const
    {
        Attempt attempt;
        const Failing failing(succeeding, course == Course::Once ? FailureExtent::Once : FailureExtent::ForEver);
        try {
            attempt.report = scenario.act(subject);
            attempt.outcome = attempt.report.Done() ? Outcome::Done : Outcome::Refused;
        } catch (const std::bad_alloc&) {
            attempt.outcome = Outcome::BadAlloc;
        } catch (const std::exception& other) {
            attempt.report = {false, 0, other.what()};
        }
        if (course == Course::UntilDestroyed) {
            subject.DestroyObjects();
        }
        attempt.fired = failing.Fired();
        return attempt;
    }

    Attempt ActWithout(Subject& subject, int succeeding) const
    {
        return memory == Memory::OfSqlite ? ActWithout<FailingSqliteMemory>(subject, succeeding)
                                          : ActWithout<FailingAllocation>(subject, succeeding);
    }

    bool Matches(std::string_view message, std::string_view expectedMessage) const
    {
        return message == expectedMessage || (expectedMessage.ends_with(": ") && message.starts_with(expectedMessage));
    }

    bool MayEndSo(const Attempt& attempt) const
    {
        const auto is = [&](const Refusal& refusal) {
            return attempt.report.Code() == refusal.code && Matches(attempt.report.Message(), refusal.message);
        };
        switch (attempt.outcome) {
        case Outcome::Done:
            return true;
        case Outcome::Refused:
            return memory == Memory::OfSqlite ? is({SQLITE_NOMEM, "out of memory"}) || is({SQLITE_NOMEM, ""}) ||
                                                    std::ranges::any_of(scenario.refusalsForSqlite, is)
                                              : std::ranges::any_of(scenario.refusalsForNew, is);
        case Outcome::BadAlloc:
            return memory == Memory::OfNew || scenario.readsText;
        default:
            return false;
        }
    }

    void ExpectRead(const Attempt& attempt, const Subject& subject) const
    {
        if (attempt.outcome == Outcome::Done) {
            EXPECT_EQ(subject.WhatWasRead(), expected.readOnce);
            return;
        }
        const std::vector<std::vector<std::string>> rows = CellTexts(subject.data);
        ASSERT_LE(rows.size(), expected.rowsOnce.size());
        EXPECT_TRUE(std::equal(rows.begin(), rows.end(), expected.rowsOnce.begin())) << subject.WhatWasRead();
    }

    /// Returns the content that doing the scenario once more must lead to.
    std::vector<std::string> ExpectContent(const Attempt& attempt, const std::string& content) const
    {
        const bool undone = content == expected.before;
        if (attempt.outcome == Outcome::Done) {
            EXPECT_TRUE(content == expected.once || (scenario.mayPassUndone && undone)) << content;
            return {content == expected.once ? expected.twice : expected.once};
        }
        const bool begun = std::ranges::find(expected.afterFirstSteps, content) != expected.afterFirstSteps.end();
        EXPECT_TRUE(undone || begun) << content;
        return begun ? std::vector{expected.once, expected.twice} : std::vector{expected.once};
    }

    void DoAgain(Subject& subject, bool wasDone) const
    {
        subject.timesDone += wasDone ? 1 : 0;
        subject.ForgetWhatWasRead();
        const Report again = scenario.act(subject);
        EXPECT_TRUE(again.Done()) << "again: " << again.Code() << ", " << again.Message();
        EXPECT_EQ(subject.WhatWasRead(), wasDone ? expected.readTwice : expected.readOnce);
    }

    /// Returns whether an allocation failed.
    bool FailAfter(int succeeding)
    {
        StartAfresh();
        Subject subject(path);
        scenario.arrange(subject);
        subject.ForgetWhatWasRead();
        const Attempt attempt = ActWithout(subject, succeeding);
        SCOPED_TRACE(testing::Message() << "after " << succeeding << " allocations: " << attempt);
        EXPECT_TRUE(MayEndSo(attempt));
        ExpectRead(attempt, subject);
        if (!attempt.fired) {
            EXPECT_EQ(attempt.outcome, Outcome::Done);
        }
        std::vector<std::string> allowed;
        if (!scenario.mayStayLocked || course == Course::UntilDestroyed) {
            allowed = ExpectContent(attempt, contents.Of(subject.path));
        } else {
            allowed = {attempt.outcome == Outcome::Done ? expected.twice : expected.once};
        }
        if (course != Course::UntilDestroyed) {
            DoAgain(subject, attempt.outcome == Outcome::Done);
            subject.DestroyObjects();
            const std::string content = contents.Of(subject.path);
            EXPECT_NE(std::ranges::find(allowed, content), allowed.end()) << content;
        }
        return attempt.fired;
    }

    const Scenario& scenario = std::get<Scenario>(GetParam());
    const Memory memory = std::get<Memory>(GetParam());
    const Course course = std::get<Course>(GetParam());

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    std::string fresh;
    KnownContents contents;
    Expectation expected;
};

TEST_P(MemoryFaultTest, EveryFailedAllocationIsReportedAndNothingIsLost)
{
    const int least = memory == Memory::OfSqlite ? scenario.least.ofSqlite : scenario.least.ofNew;
    int failures = 0;

    for (bool fired = true; fired && !HasFailure(); failures += fired ? 1 : 0) {
        const std::size_t liveBefore = LiveBytesOfNew() - contents.BytesHeld();
        const sqlite3_int64 sqliteBefore = sqlite3_memory_used();
        fired = FailAfter(failures);
        if (HasFailure()) {
            break; // it is told in memory of its own
        }
        EXPECT_EQ(LiveBytesOfNew() - contents.BytesHeld(), liveBefore) << "leaked after " << failures << " allocations";
        EXPECT_EQ(sqlite3_memory_used(), sqliteBefore) << "leaked after " << failures << " allocations";
    }

    RecordProperty("failures", failures);
    if (least == 0) {
        EXPECT_EQ(failures, 0);
    } else {
        EXPECT_GE(failures, least);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryFaultTest,
                         testing::Combine(testing::ValuesIn(AllScenarios()),
                                          testing::Values(Memory::OfSqlite, Memory::OfNew),
                                          testing::Values(Course::Once, Course::ForEver, Course::UntilDestroyed)),
                         NameOf);

} // namespace

void PrintTo(const Scenario& scenario, std::ostream* stream)
{
    *stream << scenario.name;
}

} // namespace Morvik::sql::tests
