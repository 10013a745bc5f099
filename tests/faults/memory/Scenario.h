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

/// What a cursor records of a step for which there is no memory: the generic code of the legacy interface.
inline const std::vector<Refusal> FailedStep{{1, "out of memory"}, {1, "SQL logic error"}};

/// How many allocations of each kind a scenario makes at least. 0 says that it makes none, and cannot fail therefore.
struct LeastAllocations {
    int ofSqlite;
    int ofNew;
};

/// Something that an application does with the library, to be done while memory fails. It can be done again with the
/// same objects, whatever became of it the time before.
struct Scenario {
    std::string name;

    /// Makes ready what the scenario needs, while there is memory.
    void (*arrange)(Subject& subject);

    /// Does it. Allocates nothing itself but what it reads, and reports success only if everything succeeded.
    Report (*act)(Subject& subject);

    LeastAllocations least;

    /// What is recorded when SQLite's memory fails, beside code 7 with "out of memory" or, where SQLite had no memory
    /// for that text or the operation stores none, an empty message.
    std::vector<Refusal> refusalsForSqlite{};

    /// What is recorded when operator new fails, instead of std::bad_alloc.
    std::vector<Refusal> refusalsForNew{};

    /// Statements that may have been done already when the scenario is refused.
    std::vector<std::string> firstSteps{};

    /// It may report success though it did nothing, when SQLite's memory failed where the library must not tell.
    bool mayPassUndone = false;

    /// It reads texts or bytes for which SQLite needs memory: where there is none, that is std::bad_alloc.
    bool convertsText = false;

    /// A refused act may leave a transaction open, so that other connections may find the file locked.
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

// Common ways to arrange.
void Nothing(Subject& subject);
void OpenConnection(Subject& subject);
void MakeCommand(Subject& subject);
void MakeCursor(Subject& subject);
void OpenFacade(Subject& subject);

// The same, with the schema read beforehand: otherwise SQLite reads it with the first statement, in many allocations.
// Only in a soak every scenario goes through these.
void MakeWarmCommand(Subject& subject);
void MakeWarmCursor(Subject& subject);
void OpenWarmFacade(Subject& subject);

/// A text and bytes that no object keeps within itself.
inline const std::string LongText = "a text that no object keeps within itself";

} // namespace Morvik::sql::tests
