#include "faults/storage/StorageScenario.h"

namespace Morvik::sql::tests {

namespace {

// A rollback journal is rolled back; a log without a commit is only deleted.
std::set<FileCall> CallsOfClosingInATransaction(JournalMode mode)
{
    if (mode == JournalMode::WriteAheadLog) {
        return {FileCall::Lock, FileCall::Unlock, FileCall::Delete};
    }
    return {FileCall::Unlock, FileCall::FileSize, FileCall::Read, FileCall::Write, FileCall::Sync, FileCall::Delete};
}

// A commit with a rollback journal is complete. A commit in a log is copied into the database, and the log is deleted.
std::set<FileCall> CallsOfClosingAfterAWrite(JournalMode mode)
{
    if (mode != JournalMode::WriteAheadLog) {
        return {FileCall::Unlock};
    }
    return {FileCall::Lock,  FileCall::Unlock,   FileCall::FileSize, FileCall::Read,
            FileCall::Write, FileCall::Truncate, FileCall::Sync,     FileCall::Delete};
}

// Every scenario reads the database; if it only opens the database, the number of rows is read afterwards.
std::set<FileCall> CallsOfReading(const StorageScenario& scenario, JournalMode mode)
{
    std::set<FileCall> calls{FileCall::FileSize, FileCall::Read, FileCall::Lock, FileCall::Unlock};
    if (scenario.name.starts_with("Open")) {
        calls.insert(FileCall::Open);
    }
    if (mode != JournalMode::WriteAheadLog) {
        calls.insert(FileCall::Access);
        return calls;
    }
    calls.insert(FileCall::LockShared);
    if (scenario.name != "ExecuteMoreThanTheCacheHolds") { // the preparation of this scenario already opens the log
        calls.insert({FileCall::Open, FileCall::Access, FileCall::MapShared});
    }
    if (!scenario.readOnly) {
        calls.insert(FileCall::Delete); // closing deletes the log
    }
    return calls;
}

// The calls that keep a change apart until it is committed, and those of the commit.
std::set<FileCall> CallsOfWriting(JournalMode mode)
{
    switch (mode) {
    case JournalMode::Delete:
        return {FileCall::Open, FileCall::Write, FileCall::Sync, FileCall::Delete};
    case JournalMode::Truncate:
        return {FileCall::Open, FileCall::Write, FileCall::Sync, FileCall::Truncate};
    default:
        return {FileCall::Write, FileCall::Sync, FileCall::Truncate};
    }
}

} // namespace

std::set<FileCall> NecessaryCalls(const StorageScenario& scenario, JournalMode mode)
{
    if (scenario.name == "CloseInATransaction") {
        return CallsOfClosingInATransaction(mode);
    }
    if (scenario.name == "CloseAfterAWrite") {
        return CallsOfClosingAfterAWrite(mode);
    }
    std::set<FileCall> calls = CallsOfReading(scenario, mode);
    const bool rollsBack = scenario.found == StorageScenario::Found::Unfinished && mode != JournalMode::WriteAheadLog;
    if (rollsBack) {
        calls.insert(FileCall::CheckReservedLock);
    }
    if (rollsBack || !scenario.changes.empty()) {
        calls.merge(CallsOfWriting(mode));
    }
    return calls;
}

} // namespace Morvik::sql::tests
