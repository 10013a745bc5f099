#include "Expectation.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
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

std::string FailsWith(const AllowedError& error)
{
    return "fails with code " + std::to_string(error.code) + ", \"" + std::string(error.message) + '"';
}

// A message ending in ": " is followed by a name.
bool Matches(std::string_view message, std::string_view expected)
{
    return message == expected || (expected.ends_with(": ") && message.starts_with(expected));
}

void ActWithMemory(const Scenario& scenario, Subject& subject)
{
    subject.ForgetWhatWasRead();
    const Report report = scenario.act(subject);
    if (!report.Done()) {
        throw std::runtime_error(scenario.name + ": " + std::to_string(report.Code()) + ", " +
                                 std::string(report.Message()));
    }
    ++subject.timesDone;
}

const std::vector<AllowedError>& AllowedErrors(const Scenario& scenario, Memory memory)
{
    return memory == Memory::OfSqlite ? scenario.allocations.errorsWithoutSqlite
                                      : scenario.allocations.errorsWithoutNew;
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Attempt& attempt)
{
    static constexpr std::string_view Names[] = {"done", "failed", "std::bad_alloc", "another exception"};
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
        attempt.outcome = attempt.report.Done() ? Outcome::Done : Outcome::Failed;
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

Expectation::Expectation(const Scenario& scenario, Memory memory, const std::string& path, const DatabaseFiles& fresh,
                         ContentCache& contents)
    : m_scenario(scenario), m_memory(memory)
{
    fresh.PutBack(path);
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

    const Allocations& allowed = scenario.allocations;
    const bool ofSqlite = memory == Memory::OfSqlite;
    if (allowed.firstStep && (ofSqlite ? allowed.leastOfSqlite : allowed.leastOfNew) > 0) {
        fresh.PutBack(path);
        RawSqlite(path).Execute(*allowed.firstStep);
        m_afterFirstStep = contents.Of(path);
        m_used[StopsAfterFirstStep] = false;
    }
    for (const AllowedError& error : AllowedErrors(scenario, memory)) {
        m_used[FailsWith(error)] = false;
    }
    if (ofSqlite && allowed.mayPassUndone) {
        m_used[PassesUndone] = false;
    }
    if (ofSqlite && allowed.convertsText) {
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
    case Outcome::Failed:
        return MayFailWith(attempt.report);
    case Outcome::BadAlloc:
        return m_memory == Memory::OfNew || Use(ThrowsForSqlite);
    default:
        return false;
    }
}

bool Expectation::MayFailWith(const Report& report)
{
    const auto matches = [&](const AllowedError& error) {
        return report.Code() == error.code && Matches(report.Message(), error.message);
    };
    const std::vector<AllowedError>& allowed = AllowedErrors(m_scenario, m_memory);
    if (const auto found = std::ranges::find_if(allowed, matches); found != allowed.end()) {
        return Use(FailsWith(*found));
    }
    return m_memory == Memory::OfSqlite && (matches({SQLITE_NOMEM, "out of memory"}) || matches({SQLITE_NOMEM, ""}));
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

void Expectation::ExpectContent(const Attempt& attempt, const DatabaseContent& content)
{
    const bool done = attempt.outcome == Outcome::Done;
    const bool expected =
        content == (done ? m_once : m_before) ||
        (done ? content == m_before && Use(PassesUndone) : content == m_afterFirstStep && Use(StopsAfterFirstStep));
    EXPECT_TRUE(expected) << Described(content);
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

void Expectation::ExpectContentAgain(const Attempt& attempt, const DatabaseContent& before,
                                     const DatabaseContent& content) const
{
    const bool wasDone = attempt.outcome == Outcome::Done && (m_scenario.allocations.mayStayLocked || before == m_once);
    const bool wasBegun = before == m_afterFirstStep;
    EXPECT_TRUE(content == (wasDone ? m_twice : m_once) || (wasBegun && content == m_twice)) << Described(content);
}

// Allocates nothing that stays allocated, because the caller counts such memory.
bool Expectation::Use(const std::string& allowance)
{
    const auto found = m_used.find(allowance);
    return found != m_used.end() && (found->second = true);
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

} // namespace Morvik::sql::tests
