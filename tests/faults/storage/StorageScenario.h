#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "faults/storage/StorageSide.h"
#include "support/DatabaseFiles.h"
#include "support/FailingFileSystem.h"

namespace Morvik::sql::tests {

/// How a database keeps its changes apart until they are committed.
enum class JournalMode { Delete, Truncate, WriteAheadLog };

/// What is done on a database while a call on its files fails.
struct StorageScenario {
    std::string name;

    /// Done before the fault.
    std::function<void(StorageSide& side, const std::string& path)> prepare;

    /// Done with the fault: the operation that the scenario is named for.
    std::function<StepOutcome(StorageSide& side, const std::string& path)> act;

    /// The plain statements that bring the content from one state that the operation may leave to the next, the last of
    /// them to the one that it must leave once it has succeeded. Without any, it leaves the content as it is.
    std::vector<std::string> changes{};

    /// Which files it finds: none, a database, or one whose last writer ended between its first write and its commit.
    enum class Found { Nothing, Database, Unfinished } found = Found::Database;

    bool readOnly = false;

    /// Whether a failing call makes it fail.
    bool canFail = true;

    /// Whether the success of a step is the caller's proof that its change is there.
    bool acknowledges = true;
};

/// A text of which a few fill a page.
inline std::string LongText(char letter)
{
    return std::string(700, letter);
}

/// Every scenario.
const std::vector<StorageScenario>& StorageScenarios();

/// The files that a scenario finds.
DatabaseFiles FoundFiles(StorageScenario::Found found, JournalMode mode);

/// The kinds of calls that the scenario cannot do without.
std::set<FileCall> NecessaryCalls(const StorageScenario& scenario, JournalMode mode);

} // namespace Morvik::sql::tests
