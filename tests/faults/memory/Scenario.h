#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Subject.h"

namespace Morvik::sql::tests {

/// A code and the beginning of its message.
struct Refusal {
    int code;
    std::string_view message;
};

/// The error of a cursor's step without memory: the generic code of the legacy interface.
inline const std::vector<Refusal> FailedStep{{1, "out of memory"}, {1, "SQL logic error"}};

/// The minimum number of allocations of each kind that a scenario makes. 0 means that it makes none, and so cannot
/// fail.
struct LeastAllocations {
    int ofSqlite;
    int ofNew;
};

/// A use of the library that is run while memory fails. It can be repeated with the same objects, whatever its previous
/// result.
struct Scenario {
    std::string name;

    /// Prepares what the scenario needs, while memory is available.
    void (*arrange)(Subject& subject);

    /// Runs the operation. It allocates only for what it reads, and reports success only if everything succeeded.
    Report (*act)(Subject& subject);

    LeastAllocations least;

    /// The errors allowed when SQLite's memory fails, in addition to code 7. With code 7, the message is "out of
    /// memory", or empty if SQLite had no memory for the text or the operation stores none.
    std::vector<Refusal> refusalsForSqlite{};

    /// The errors allowed when operator new fails, instead of std::bad_alloc.
    std::vector<Refusal> refusalsForNew{};

    /// Statements that may have been executed already when the scenario fails.
    std::vector<std::string> firstSteps{};

    /// The scenario may report success without an effect, if SQLite's memory failed where the library must not report
    /// it.
    bool mayPassUndone = false;

    /// The scenario reads texts or bytes for which SQLite needs memory; without memory, it throws std::bad_alloc.
    bool convertsText = false;

    /// A failed act may leave a transaction open, so that other connections may find the file locked.
    bool mayStayLocked = false;
};

std::vector<Scenario> ConnectionScenarios();
std::vector<Scenario> CommandScenarios();
std::vector<Scenario> CursorScenarios();
std::vector<Scenario> MoveScenarios();
std::vector<Scenario> ValueScenarios();
std::vector<Scenario> FacadeScenarios();
std::vector<Scenario> FacadeTableScenarios();
std::vector<Scenario> FacadeRowScenarios();
std::vector<Scenario> FacadeReadScenarios();
std::vector<Scenario> RenderingScenarios();

// Functions for `arrange` that several scenarios use.
void Nothing(Subject& subject);
void OpenConnection(Subject& subject);
void MakeCommand(Subject& subject);
void MakeCursor(Subject& subject);
void OpenFacade(Subject& subject);

// The same functions, which also read the schema. Otherwise SQLite reads it with the first statement, in many
// allocations, and only a soak makes each of them fail in every scenario.
void MakeWarmCommand(Subject& subject);
void MakeWarmCursor(Subject& subject);
void OpenWarmFacade(Subject& subject);

/// A text and bytes that are too long for the small buffer inside an object.
inline const std::string LongText = "a text that no object keeps within itself";

} // namespace Morvik::sql::tests
