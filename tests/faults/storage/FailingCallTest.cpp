#include <gtest/gtest.h>

#include <sqlite3.h>

#include <algorithm>

#include "faults/ContentCache.h"
#include "faults/storage/FaultInjectionVfs.h"
#include "faults/storage/StorageScenario.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

// Every way in which a call can fail, once or from then on. SQLite's file system reports most failures with these
// codes. A file system that an application provides may report a full disk in other calls than writes, too.
std::vector<FileFault> Faults()
{
    using enum FileCall;
    static const std::vector<std::pair<FileCall, std::vector<int>>> Codes{
        {Open, {SQLITE_CANTOPEN, SQLITE_IOERR, SQLITE_FULL}},
        {Read, {SQLITE_IOERR_READ, SQLITE_FULL}},
        {Write, {SQLITE_IOERR_WRITE, SQLITE_FULL}},
        {Truncate, {SQLITE_IOERR_TRUNCATE, SQLITE_FULL}},
        {Sync, {SQLITE_IOERR_FSYNC, SQLITE_FULL}},
        {FileSize, {SQLITE_IOERR_FSTAT, SQLITE_FULL}},
        {Delete, {SQLITE_IOERR_DELETE, SQLITE_FULL}},
        {Access, {SQLITE_IOERR_ACCESS}},
        {Lock, {SQLITE_BUSY, SQLITE_IOERR_LOCK, SQLITE_FULL}},
        {Unlock, {SQLITE_IOERR_UNLOCK}},
        {CheckReservedLock, {SQLITE_IOERR_CHECKRESERVEDLOCK}},
        {MapShared, {SQLITE_IOERR_SHMMAP}},
        {LockShared, {SQLITE_BUSY, SQLITE_IOERR_SHMLOCK}},
    };
    std::vector<FileFault> faults;
    for (const bool lasting : {false, true}) {
        for (const auto& [call, codes] : Codes) {
            for (const int code : codes) {
                faults.push_back({.call = call, .code = code, .lasting = lasting});
            }
        }
        faults.push_back({.call = Write, .code = SQLITE_FULL, .lasting = lasting, .carriedOut = true});
        faults.push_back({.call = Delete, .code = SQLITE_IOERR_DIR_FSYNC, .lasting = lasting, .carriedOut = true});
    }
    return faults;
}

struct Case {
    JournalMode mode;
    const StorageScenario* scenario;
};

// The mode Truncate makes a difference only for a write to an intact file. Only an existing file has a write-ahead log.
std::vector<Case> CasesOf(JournalMode mode)
{
    std::vector<Case> cases;
    for (const StorageScenario& scenario : StorageScenarios()) {
        const bool writesToIntactFile = !scenario.changes.empty() && scenario.found != Found::Unfinished;
        if (mode == JournalMode::Delete || (mode == JournalMode::Truncate && writesToIntactFile) ||
            (mode == JournalMode::WriteAheadLog && scenario.found != Found::Nothing)) {
            cases.push_back({mode, &scenario});
        }
    }
    return cases;
}

// The results of a run of the scenario, and the content that it left.
struct RunResult {
    std::string outcomes;
    bool acknowledged = false;
    int fired = 0;
    const DatabaseContent* content = nullptr;
};

class FailingCallTest : public testing::TestWithParam<Case> {
protected:
    template <typename Facade>
    RunResult RunWith(const FileFault& fault)
    {
        const StorageScenario& scenario = *GetParam().scenario;
        m_found.PutBack(m_path);
        RunResult run;
        {
            FacadeDriver<Facade> side(m_directory.Path().string() + '/');
            EXPECT_TRUE(scenario.prepare(side).succeeded);
            if (GetParam().mode == JournalMode::Truncate && !scenario.readOnly) {
                side.Execute("PRAGMA journal_mode = TRUNCATE");
            }
            m_disk.Arm(fault);
            const StepOutcome outcome = scenario.act(side);
            run.acknowledged = outcome.succeeded;
            // The read and the close show how the connection works after the fault.
            for (const StepOutcome& step : {outcome, side.Read("SELECT count(*) FROM reading"), side.CloseAll()}) {
                run.outcomes += TextOf(step) + '\n';
            }
            run.fired = m_disk.Fired();
        }
        m_disk.Arm({});
        run.content = &m_contents.Of(m_path);
        return run;
    }

    // The content before the scenario, and the contents that it may leave.
    std::vector<DatabaseContent> States()
    {
        m_found.PutBack(m_path);
        std::vector<DatabaseContent> states{m_contents.Of(m_path)};
        for (const std::string& change : GetParam().scenario->changes) {
            RawSqlite(m_path).Execute(change);
            states.push_back(m_contents.Of(m_path));
        }
        return states;
    }

    FaultInjectionVfs m_disk;
    TemporaryDirectory m_directory;
    std::string m_path = m_directory.File(StorageFile);
    DatabaseFiles m_found = FoundFiles(GetParam().scenario->found, GetParam().mode);
    ContentCache m_contents;
};

TEST_P(FailingCallTest, GivesTheReferencesOutcomeAndACompleteContent)
{
    const std::vector<DatabaseContent> states = States();
    std::set<FileCall> fired;
    int failedCalls = 0;
    int failures = 0;

    for (FileFault fault : Faults()) {
        for (fault.position = 1;; ++fault.position) {
            SCOPED_TRACE(Described(fault));

            const RunResult expected = RunWith<ReferenceFacade>(fault);
            const RunResult actual = RunWith<DatabaseApi>(fault);

            ASSERT_EQ(actual.outcomes, expected.outcomes);
            ASSERT_EQ(actual.fired, expected.fired);
            ASSERT_TRUE(*actual.content == *expected.content) << Described(*actual.content);
            if (actual.acknowledged && GetParam().scenario->acknowledges) {
                ASSERT_TRUE(*actual.content == states.back()) << Described(*actual.content);
            }
            ASSERT_NE(std::ranges::find(states, *actual.content), states.end()) << Described(*actual.content);
            if (actual.fired == 0) {
                ASSERT_TRUE(actual.acknowledged) << actual.outcomes;
                break;
            }
            fired.insert(fault.call);
            failedCalls += actual.fired;
            failures += actual.acknowledged ? 0 : 1;
        }
    }

    EXPECT_EQ(failures > 0, GetParam().scenario->canFail);
    for (const FileCall call : NecessaryCalls(*GetParam().scenario, GetParam().mode)) {
        EXPECT_TRUE(fired.contains(call)) << Described(FileFault{.call = call}) << " never happened";
    }
    RecordProperty("failed_calls", failedCalls);
}

// A fault that no scenario can cause would be in the table without being tested.
TEST(FailingCallTableTest, EveryFaultConcernsACallThatSomeScenarioMakes)
{
    std::set<FileCall> necessary;

    for (const JournalMode mode : {JournalMode::Delete, JournalMode::Truncate, JournalMode::WriteAheadLog}) {
        for (const Case& each : CasesOf(mode)) {
            necessary.merge(NecessaryCalls(*each.scenario, mode));
        }
    }

    for (const FileFault& fault : Faults()) {
        EXPECT_TRUE(necessary.contains(fault.call)) << Described(fault);
    }
}

constexpr auto NameOf = [](const auto& tested) { return tested.param.scenario->name; };

// One suite for each mode, so that CTest can run the modes at the same time.
INSTANTIATE_TEST_SUITE_P(DeletedJournal, FailingCallTest, testing::ValuesIn(CasesOf(JournalMode::Delete)), NameOf);
INSTANTIATE_TEST_SUITE_P(TruncatedJournal, FailingCallTest, testing::ValuesIn(CasesOf(JournalMode::Truncate)), NameOf);
INSTANTIATE_TEST_SUITE_P(WriteAheadLog, FailingCallTest, testing::ValuesIn(CasesOf(JournalMode::WriteAheadLog)),
                         NameOf);

} // namespace

} // namespace Morvik::sql::tests
