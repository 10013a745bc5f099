#pragma once

#include <sql/DatabaseApi.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <array>
#include <filesystem>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/OomInjector.h"

namespace Morvik::sql::tests {

/// The result of an operation, stored without allocating.
class Report {
public:
    Report() = default;

    Report(bool done, int code, std::string_view message) : m_done(done), m_code(code)
    {
        message.copy(m_message.data(), m_message.size() - 1);
    }

    /// Whether the operation succeeded, and the error of the object that it was called on.
    template <typename Object>
    Report(bool done, const Object& object) : Report(done, object.GetLastError(), object.GetLastErrorMsg())
    {}

    bool Done() const { return m_done; }
    int Code() const { return m_code; }

    /// The first bytes of the message, enough to identify it.
    std::string_view Message() const { return m_message.data(); }

private:
    bool m_done = false;
    int m_code = 0;
    std::array<char, 80> m_message{};
};

/// The data that a scenario read.
struct ReadData {
    DbTableData data;
    DbTableRowValues row;
    std::string text;
    std::string otherText;
    std::vector<char> bytes;
    long long integer = 0;
    double real = 0;
    int result = 0;
};

/// The objects that a scenario uses, and the data that it read. They are members, so that they can be checked when
/// memory is available again, and so that their memory is counted.
struct Subject : ReadData {
    /// A subject whose database file is `file`; it may create other files in the same directory.
    explicit Subject(const std::filesystem::path& file) : path(file.string()), directory(file.parent_path()) {}

    /// Destroys the objects of the library in the required order.
    void DestroyObjects();

    void ForgetWhatWasRead() { static_cast<ReadData&>(*this) = {}; }

    /// The data that was read, as a text to compare.
    std::string WhatWasRead() const;

    std::string path;
    std::filesystem::path directory;

    /// How often the scenario has succeeded.
    int timesDone = 0;

    std::optional<SqlDatabase> connection;
    std::optional<SqlCommand> command;
    std::optional<SqlTable> cursor;

    std::optional<DatabaseApi> facade;
    std::optional<SqlCommand> statement;

    DbTableDefinition definition;
    DbTableDataWrite write;
};

constexpr auto Connection = &Subject::connection;
constexpr auto Command = &Subject::command;
constexpr auto Cursor = &Subject::cursor;
constexpr auto Facade = &Subject::facade;

/// A code and the beginning of its message.
struct AllowedError {
    int code;
    std::string_view message;
};

/// The allocations of a scenario, and what the scenario may do when one of them fails. Every allowance must be used.
struct Allocations {
    /// The minimum number of allocations of each kind. 0 means that the scenario makes none, and so cannot fail.
    int ofSqlite;
    int ofNew;

    /// The errors allowed when SQLite's memory fails, in addition to code 7. With code 7, the message is "out of
    /// memory", or empty if SQLite had no memory for the text or the operation stores none.
    std::vector<AllowedError> errorsOfSqlite{};

    /// The errors allowed when operator new fails, instead of std::bad_alloc.
    std::vector<AllowedError> errorsOfNew{};

    /// A statement that may have been executed already when the scenario fails.
    std::optional<std::string> firstStep{};

    /// The scenario may report success without an effect, if SQLite's memory failed where the library must not report
    /// it.
    bool mayPassUndone = false;

    /// The scenario reads texts or bytes for which SQLite needs memory; without memory, it throws std::bad_alloc.
    bool convertsText = false;

    /// If the scenario fails, it may leave a transaction open, and the file stays locked for other connections.
    bool mayStayLocked = false;

    int LeastOf(Memory memory) const { return memory == Memory::OfSqlite ? ofSqlite : ofNew; }

    const std::vector<AllowedError>& ErrorsOf(Memory memory) const
    {
        return memory == Memory::OfSqlite ? errorsOfSqlite : errorsOfNew;
    }
};

/// A use of the library that is run while memory fails. It can be repeated with the same objects after a success and
/// after a failure.
struct Scenario {
    std::string name;

    /// Prepares what the scenario needs, while memory is available.
    void (*arrange)(Subject& subject);

    Allocations allocations;

    /// Runs the operation. It allocates only for what it reads, and reports success only if everything succeeded.
    std::function<Report(Subject& subject)> act;
};

/// The scenarios, in the order in which they were added.
class ScenarioList : public std::vector<Scenario> {
public:
    void Add(std::string name, void (*arrange)(Subject&), Allocations allocations, std::function<Report(Subject&)> act)
    {
        push_back({std::move(name), arrange, std::move(allocations), std::move(act)});
    }

    /// Adds an operation on one of the subject's objects; it reports the error of that object.
    template <typename Object>
    void Add(std::string name, void (*arrange)(Subject&), Allocations allocations,
             std::optional<Object> Subject::*object,
             std::type_identity_t<std::function<bool(Subject&, Object&)>> operation)
    {
        Add(std::move(name), arrange, std::move(allocations), [=](Subject& subject) {
            Object& used = *(subject.*object);
            return Report(operation(subject, used), used);
        });
    }
};

void AddOpeningScenarios(ScenarioList& list);
void AddCommandScenarios(ScenarioList& list);
void AddCursorScenarios(ScenarioList& list);
void AddMoveScenarios(ScenarioList& list);
void AddTableScenarios(ScenarioList& list);
void AddRowScenarios(ScenarioList& list);

// Functions for `arrange` that several scenarios use.
void Nothing(Subject& subject);
void OpenConnection(Subject& subject);
void MakeCommand(Subject& subject);
void MakeCursor(Subject& subject);
void OpenFacade(Subject& subject);

/// Reads the schema. Only a soak leaves it out: then the first statement of the scenario reads the schema, which takes
/// many allocations.
void ReadSchema(Subject& subject);

/// Prepares the scenario with `Arrange`, and reads the schema.
template <void (*Arrange)(Subject&)>
void Warm(Subject& subject)
{
    Arrange(subject);
    ReadSchema(subject);
}

/// Opens the query, calls `read` for each row, and closes the cursor. Only the code distinguishes the end of the rows
/// from a failed step. A failed step has the generic code; closing returns the specific one.
template <typename Read>
bool ReadRows(const SqlTable& cursor, const std::string& query, const Read& read)
{
    if (!cursor.Open(query)) {
        return false;
    }
    while (cursor.ReadNext()) {
        read();
    }
    const bool ended = cursor.GetLastError() == 0;
    return cursor.Close() && ended;
}

/// Steps the statement, and calls `read` for each row. Returns whether no step failed.
template <typename Read>
bool StepRows(SqlCommand& command, const Read& read)
{
    bool stepped = command.Step();
    for (; stepped && command.HasRowData(); stepped = command.Step()) {
        read();
    }
    return stepped;
}

/// The error of a cursor's step without memory: the generic code of the legacy interface.
inline const std::vector<AllowedError> FailedStep{{1, "out of memory"}, {1, "SQL logic error"}};

/// A query whose step fails.
inline const std::string Overflow = "SELECT abs(-9223372036854775807 - 1)";

/// A text and bytes that are too long for the small buffer inside an object.
inline const std::string AllocatedText = "a text that no object keeps within itself";

} // namespace Morvik::sql::tests
