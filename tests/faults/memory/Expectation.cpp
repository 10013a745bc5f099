#include "Expectation.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <new>
#include <ostream>
#include <stdexcept>

#include "support/Cells.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

const std::string StopsAfterFirstStep = "stops after the first step";
const std::string PassesUndone = "reports success with nothing done";
const std::string ThrowsForSqlite = "throws std::bad_alloc for SQLite";

std::string RefusesWith(const Refusal& refusal)
{
    return "is refused with code " + std::to_string(refusal.code) + ", \"" + std::string(refusal.message) + '"';
}

// A message ending in ": " is followed by a name.
bool Matches(std::string_view message, std::string_view expected)
{
    return message == expected || (expected.ends_with(": ") && message.starts_with(expected));
}

Report ActWithMemory(const Scenario& scenario, Subject& subject)
{
    subject.ForgetWhatWasRead();
    const Report report = scenario.act(subject);
    if (!report.Done()) {
        throw std::runtime_error(scenario.name + ": " + std::to_string(report.Code()) + ", " +
                                 std::string(report.Message()));
    }
    ++subject.timesDone;
    return report;
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Attempt& attempt)
{
    static constexpr std::string_view Names[] = {"done", "refused", "std::bad_alloc", "another exception"};
    return stream << Names[static_cast<int>(attempt.outcome)] << ", code " << attempt.report.Code() << ", \""
                  << attempt.report.Message() << '"';
}

Attempt ActWithout(Memory memory, Course course, int succeeding, const Scenario& scenario, Subject& subject)
{
    Attempt attempt;
    const OomInjector failing(succeeding, course == Course::Once ? FailureExtent::Once : FailureExtent::ForEver,
                              memory);
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

Expectation::Expectation(const Scenario& scenario, Memory memory, const std::string& path, const std::string& fresh,
                         ContentCache& contents)
    : m_scenario(scenario), m_memory(memory)
{
    StartAgain(path, fresh);
    {
        Subject subject(path);
        scenario.arrange(subject);
        m_before = contents.Of(subject.path);
        ActWithMemory(scenario, subject);
        m_once = contents.Of(subject.path);
        m_readOnce = subject.WhatWasRead();
        m_rowsOnce = CellTexts(subject.data);
        ActWithMemory(scenario, subject);
        m_readTwice = subject.WhatWasRead();
        subject.DestroyObjects();
        m_twice = contents.Of(subject.path);
    }

    const bool ofSqlite = memory == Memory::OfSqlite;
    if (scenario.firstStep && (ofSqlite ? scenario.least.ofSqlite : scenario.least.ofNew) > 0) {
        StartAgain(path, fresh);
        RawSqlite(path).Execute(*scenario.firstStep);
        m_afterFirstStep = contents.Of(path);
        m_used[StopsAfterFirstStep] = false;
    }
    for (const Refusal& refusal : ofSqlite ? scenario.refusalsForSqlite : scenario.refusalsForNew) {
        m_used[RefusesWith(refusal)] = false;
    }
    if (ofSqlite && scenario.mayPassUndone) {
        m_used[PassesUndone] = false;
    }
    if (ofSqlite && scenario.convertsText) {
        m_used[ThrowsForSqlite] = false;
    }
}

void Expectation::ExpectReport(const Attempt& attempt)
{
    EXPECT_TRUE(MayReport(attempt));
    if (!attempt.fired) {
        EXPECT_EQ(attempt.outcome, Outcome::Done);
    }
}

bool Expectation::MayReport(const Attempt& attempt)
{
    switch (attempt.outcome) {
    case Outcome::Done:
        return true;
    case Outcome::Refused:
        return MayRefuseWith(attempt.report);
    case Outcome::BadAlloc:
        Use(ThrowsForSqlite);
        return m_memory == Memory::OfNew || m_scenario.convertsText;
    default:
        return false;
    }
}

bool Expectation::MayRefuseWith(const Report& report)
{
    const auto matches = [&](const Refusal& refusal) {
        return report.Code() == refusal.code && Matches(report.Message(), refusal.message);
    };
    const bool ofSqlite = m_memory == Memory::OfSqlite;
    const std::vector<Refusal>& allowed = ofSqlite ? m_scenario.refusalsForSqlite : m_scenario.refusalsForNew;
    if (const auto found = std::ranges::find_if(allowed, matches); found != allowed.end()) {
        Use(RefusesWith(*found));
        return true;
    }
    return ofSqlite && (matches({SQLITE_NOMEM, "out of memory"}) || matches({SQLITE_NOMEM, ""}));
}

void Expectation::ExpectRead(const Attempt& attempt, const Subject& subject) const
{
    if (attempt.outcome == Outcome::Done) {
        EXPECT_EQ(subject.WhatWasRead(), m_readOnce);
        return;
    }
    const std::vector<std::vector<std::string>> rows = CellTexts(subject.data);
    ASSERT_LE(rows.size(), m_rowsOnce.size());
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), m_rowsOnce.begin())) << subject.WhatWasRead();
}

void Expectation::ExpectContent(const Attempt& attempt, const std::string& content)
{
    const bool undone = content == m_before;
    if (attempt.outcome == Outcome::Done) {
        EXPECT_TRUE(content == m_once || (m_scenario.mayPassUndone && undone)) << content;
        if (content != m_once) {
            Use(PassesUndone);
        }
        return;
    }
    const bool begun = content == m_afterFirstStep;
    EXPECT_TRUE(undone || begun) << content;
    if (begun) {
        Use(StopsAfterFirstStep);
    }
}

void Expectation::ExpectAgain(const Attempt& attempt, Subject& subject) const
{
    const bool wasDone = attempt.outcome == Outcome::Done;
    subject.timesDone += wasDone ? 1 : 0;
    subject.ForgetWhatWasRead();
    const Report again = m_scenario.act(subject);
    EXPECT_TRUE(again.Done()) << "again: " << again.Code() << ", " << again.Message();
    EXPECT_EQ(subject.WhatWasRead(), wasDone ? m_readTwice : m_readOnce);
}

void Expectation::ExpectContentAgain(const Attempt& attempt, const std::string& before,
                                     const std::string& content) const
{
    const bool wasDone = attempt.outcome == Outcome::Done && (m_scenario.mayStayLocked || before == m_once);
    const bool wasBegun = before == m_afterFirstStep;
    const std::string& expected = wasDone ? m_twice : m_once;
    EXPECT_TRUE(content == expected || (wasBegun && content == m_twice)) << content;
}

// Allocates nothing that stays allocated, because the caller counts such memory.
void Expectation::Use(const std::string& allowance)
{
    if (const auto found = m_used.find(allowance); found != m_used.end()) {
        found->second = true;
    }
}

std::vector<std::string> Expectation::UnusedAllowances() const
{
    std::vector<std::string> unused;
    for (const auto& [allowance, used] : m_used) {
        if (!used) {
            unused.push_back(allowance);
        }
    }
    return unused;
}

void StartAgain(const std::string& path, const std::string& fresh)
{
    std::filesystem::remove(path + "-journal");
    std::ofstream(path, std::ios::binary) << fresh;
}

} // namespace Morvik::sql::tests
