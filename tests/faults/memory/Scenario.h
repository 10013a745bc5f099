#pragma once

#include <sql/DatabaseApi.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <array>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

/// The result of an operation, stored without allocating.
class Report {
public:
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
    bool m_done;
    int m_code;
    std::array<char, 80> m_message{};
};

/// The data that a scenario read.
struct ReadData {
    void Note(int read) { integer += read; }
    void Note(double read) { real += read; }
    void Note(const std::string& read) { text += read; }

    template <typename Bytes>
    void Note(const Bytes& read)
    {
        bytes.insert(bytes.end(), read.begin(), read.end());
    }

    DbTableData data;
    DbTableRowValues row;
    std::string text;
    std::vector<char> bytes;
    long long integer = 0;
    double real = 0;
    int result = 0;
};

/// The objects that a scenario uses, and the data that it read. They are members, so that they can be checked when
/// memory is available again, and so that their memory is counted.
struct Subject : ReadData {
    /// A subject whose database file is `file`; it may create other files whose names begin with `file`.
    explicit Subject(std::string file) : path(std::move(file)) {}

    /// Destroys the objects of the library in the required order.
    void DestroyObjects();

    void ForgetWhatWasRead() { static_cast<ReadData&>(*this) = {}; }

    /// The rows of `data`, each on one line.
    std::string RowsRead() const;

    /// The data that was read, as a text to compare: the rows, then the other data.
    std::string WhatWasRead() const;

    std::string path;

    /// How often the scenario has succeeded.
    int timesDone = 0;

    std::optional<SqlDatabase> connection;
    std::optional<DatabaseApi> facade;
    std::optional<SqlCommand> command;
    std::optional<SqlTable> cursor;

    DbTableDefinition definition;
    DbTableDataWrite write;
};

constexpr auto Connection = &Subject::connection;
constexpr auto Facade = &Subject::facade;
constexpr auto Command = &Subject::command;
constexpr auto Cursor = &Subject::cursor;

/// A code and the beginning of its message.
struct AllowedError {
    int code;
    std::string_view message;
};

/// The error of a scenario that throws std::bad_alloc. No operation returns the code.
inline constexpr AllowedError BadAlloc{-1, "std::bad_alloc"};

/// The allocations of a scenario, and what the scenario may do when one of them fails. Every allowance must be used.
struct Allocations {
    /// The minimum number of allocations of each kind. 0 means that the scenario makes none, and so cannot fail.
    int ofSqlite;
    int ofNew;

    /// The errors allowed when SQLite's memory fails, in addition to code 7. With code 7, the message is "out of
    /// memory", or empty if SQLite had no memory for the text or the operation stores none. Reading a text for which
    /// SQLite needs memory throws std::bad_alloc.
    std::vector<AllowedError> errorsOfSqlite{};

    /// The errors allowed when operator new fails, in addition to std::bad_alloc.
    std::vector<AllowedError> errorsOfNew{};

    /// A statement that may have been executed already when the scenario fails.
    std::optional<std::string> firstStep{};

    /// The scenario may report success without an effect, if SQLite's memory failed where the library must not report
    /// it.
    bool mayPassUndone = false;

    /// If the scenario fails, it may leave a transaction open, and the file stays locked for other connections.
    bool mayStayLocked = false;
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

    friend void PrintTo(const Scenario& scenario, std::ostream* stream) { *stream << scenario.name; }
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
void AddTableScenarios(ScenarioList& list);
void AddRowScenarios(ScenarioList& list);

// Functions for `arrange` that several scenarios use. If one fails, the scenario fails too.
inline void Nothing(Subject&) {}
void OpenConnection(Subject& subject);
void MakeCommand(Subject& subject);
void MakeCursor(Subject& subject);
void OpenFacade(Subject& subject);

/// Creates a closed connection or facade.
template <auto Object>
void Create(Subject& subject)
{
    (subject.*Object).emplace();
}

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

/// Moves `source` into a new object, and moves it back when this object is destroyed, also by an exception: a
/// moved-from connection or cursor may not be destroyed.
template <typename T>
class MovedAway {
public:
    explicit MovedAway(T& source) : m_source(source), m_taken(std::move(source)) {}
    ~MovedAway() { m_source = std::move(*m_taken); }

    MovedAway(const MovedAway&) = delete;
    MovedAway& operator=(const MovedAway&) = delete;

    T& operator*() { return *m_taken; }
    T* operator->() { return &*m_taken; }

private:
    T& m_source;
    NoDestructor<T> m_taken;
};

/// A query whose step fails, and a text that SQLite rejects.
inline const std::string Overflow = "SELECT abs(-9223372036854775807 - 1)";
inline const std::string Malformed = "SELECT nothing_of_that_name FROM t";

/// A query with a parameter. With parameter 0, its last row has no name.
inline const std::string BoundQuery =
    "SELECT id, name, weight, picture FROM t WHERE id > ? ORDER BY name DESC, id DESC";

/// A text and bytes that are too long for the small buffer inside an object.
inline const std::string AllocatedText = "a text that no object keeps within itself";
inline const std::string Insert = "INSERT INTO t (name, weight) VALUES ('" + AllocatedText + "', 2.5)";

/// The error of a cursor's step without memory: the generic code of the legacy interface.
inline const std::vector<AllowedError> FailedStep{{1, "out of memory"}, {1, "SQL logic error"}};

} // namespace Morvik::sql::tests
