#include "faults/storage/StorageScenario.h"

namespace Morvik::sql::tests {

std::set<FileCall> NecessaryCalls(const StorageScenario& scenario, JournalMode mode)
{
    if (scenario.name.starts_with("Open")) {
        return {FileCall::Open};
    }
    if (!scenario.canFail) {
        return {FileCall::Unlock};
    }
    std::set<FileCall> calls{FileCall::FileSize};
    if (mode == JournalMode::WriteAheadLog) {
        calls.insert({FileCall::Read, FileCall::LockShared});
    } else {
        calls.insert({FileCall::Lock, FileCall::Unlock, FileCall::Access});
    }
    if (scenario.name == "ReadValues" && mode == JournalMode::WriteAheadLog) {
        calls.insert(FileCall::MapShared);
    }
    if (scenario.found == StorageScenario::Found::Unfinished && mode != JournalMode::WriteAheadLog) {
        calls.insert(FileCall::CheckReservedLock);
    }
    if (!scenario.changes.empty()) {
        calls.insert({FileCall::Write, FileCall::Sync});
        if (mode == JournalMode::Delete) {
            calls.insert(FileCall::Delete);
        } else if (mode == JournalMode::Truncate) {
            calls.insert(FileCall::Truncate);
        }
    }
    return calls;
}

} // namespace Morvik::sql::tests
