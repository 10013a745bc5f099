#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "faults/storage/VfsShim.h"
#include "support/DatabaseFiles.h"
#include "support/FacadeDriver.h"

namespace Morvik::sql::tests {

/// The journal modes of SQLite that the tests use.
enum class JournalMode { Delete, Truncate, WriteAheadLog };

/// The files before a scenario: none, a database, or a database whose last writer ended between its first write and
/// its commit.
enum class Found { Nothing, Database, Unfinished };

/// The name of the database file.
inline constexpr const char* StorageFile = "test.db";

/// Steps that the library and the reference do in the same way.
class StorageSteps {
public:
    template <typename Steps>
    StorageSteps(Steps steps) : m_onLibrary(steps), m_onReference(steps)
    {}

    StepOutcome operator()(FacadeDriver<DatabaseApi>& side) const { return m_onLibrary(side); }
    StepOutcome operator()(FacadeDriver<ReferenceFacade>& side) const { return m_onReference(side); }

private:
    std::function<StepOutcome(FacadeDriver<DatabaseApi>&)> m_onLibrary;
    std::function<StepOutcome(FacadeDriver<ReferenceFacade>&)> m_onReference;
};

/// An operation on a database while a call on its files fails.
struct StorageScenario {
    std::string name;

    /// The steps during which a call fails. The scenario is named for this operation.
    StorageSteps act;

    /// Raw SQL statements that change the content from one state that the operation may leave to the next. The last
    /// statement leads to the state that the operation must leave when it succeeds. Without statements, the operation
    /// leaves the content unchanged.
    std::vector<std::string> changes{};

    /// The steps before the fault.
    StorageSteps prepare = [](auto& side) { return side.Open(StorageFile, false); };

    Found found = Found::Database;

    bool readOnly = false;

    /// Whether the scenario fails when a call fails.
    bool canFail = true;

    /// Whether the success of a step proves to the caller that the change is stored.
    bool acknowledges = true;
};

/// Every scenario.
const std::vector<StorageScenario>& StorageScenarios();

/// The files before the scenario.
DatabaseFiles FoundFiles(Found found, JournalMode mode);

/// The kinds of calls that the scenario always makes.
std::set<FileCall> NecessaryCalls(const StorageScenario& scenario, JournalMode mode);

} // namespace Morvik::sql::tests
