// Moves of a cursor that holds a query, of a command that holds a statement, and of their connection.
#include <sqlite3.h>

#include <utility>

#include "Scenario.h"
#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

namespace {

const std::string Query = "SELECT id, name FROM t WHERE name <> '' ORDER BY name, id";
const std::string BoundQuery = "SELECT id, name FROM t WHERE id > ? ORDER BY id";
const std::string OtherQuery = "SELECT name FROM room ORDER BY 1 DESC";

// Moves `source` into a new object, and moves it back when this object is destroyed, also by an exception: a
// moved-from connection or cursor may not be destroyed.
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

void ArrangeOpenCursor(Subject& subject)
{
    Warm<MakeCursor>(subject);
    subject.cursor->Open(Query);
    subject.cursor->ReadNext();
}

bool StepFirst(SqlCommand& command)
{
    return command.Prepare(BoundQuery) && command.BindInteger(1, 0) && command.Step();
}

void ArrangeSteppedCommand(Subject& subject)
{
    Warm<MakeCommand>(subject);
    StepFirst(*subject.command);
}

// Assigning to a cursor closes the query that it holds; the error of that closing is discarded.
Report ReplaceCursor(Subject& subject)
{
    SqlTable source(*subject.connection);
    if (!source.Open(OtherQuery) || !source.ReadNext()) {
        return Report(false, source);
    }
    NoDestructor<SqlTable> closed(*subject.connection);

    SqlTable& cursor = *subject.cursor;
    cursor = std::move(source);
    source = std::move(*closed);

    subject.text = cursor.GetText(0);
    return Report(cursor.IsOpen() && cursor.GetLastError() == SQLITE_ROW, cursor);
}

Report ReplaceCommand(Subject& subject)
{
    SqlCommand source(*subject.connection);
    if (!StepFirst(source)) {
        return Report(false, source);
    }
    SqlCommand& command = *subject.command;
    command = std::move(source);
    subject.integer = command.ColumnInt64(0);
    subject.text = command.ColumnText(1);
    return Report(command.HasRowData(), command);
}

} // namespace

void AddMoveScenarios(ScenarioList& list)
{
    list.Add("MoveOntoAnOpenCursor", ArrangeOpenCursor, {.ofSqlite = 20, .ofNew = 2, .errorsOfSqlite = FailedStep},
             ReplaceCursor);
    list.Add("MoveOntoAFailedCursor", Warm<MakeCursor>, {.ofSqlite = 20, .ofNew = 3, .errorsOfSqlite = FailedStep},
             [](Subject& subject) {
                 const bool failed = subject.cursor->Open(Overflow) && !subject.cursor->ReadNext();
                 return failed ? ReplaceCursor(subject) : Report(false, *subject.cursor);
             });
    list.Add("MoveOntoACommandHoldingAStatement", ArrangeSteppedCommand, {20, 1}, ReplaceCommand);
    list.Add("MoveOntoAFailedCommand", Warm<MakeCommand>, {20, 2}, [](Subject& subject) {
        subject.command->Finalize();
        const bool failed = subject.command->Prepare(Overflow) && !subject.command->Step();
        return failed ? ReplaceCommand(subject) : Report(false, *subject.command);
    });
    list.Add("WalkMovedCursor", Warm<MakeCursor>, {20, 3}, [](Subject& subject) {
        if (!subject.cursor->Open(Query)) {
            return Report(false, *subject.cursor);
        }
        if (!subject.cursor->ReadNext()) {
            subject.cursor->Close(); // leaves the code of the failure
            return Report(false, *subject.cursor);
        }
        MovedAway<SqlTable> cursor(*subject.cursor);
        do {
            subject.integer += cursor->GetInt64(0);
            subject.text += cursor->GetText(1);
        } while (cursor->ReadNext());
        const bool ended = cursor->GetLastError() == SQLITE_OK;
        const bool closed = cursor->Close();
        return Report(ended && closed, *cursor);
    });
    list.Add("StepMovedCommand", Warm<MakeCommand>, {20, 2}, [](Subject& subject) {
        subject.command->Finalize();
        if (!StepFirst(*subject.command)) {
            return Report(false, *subject.command);
        }
        MovedAway<SqlCommand> command(*subject.command);
        bool stepped = true;
        for (; stepped && command->HasRowData(); stepped = command->Step()) {
            subject.integer += command->ColumnInt64(0);
            subject.text += command->ColumnText(1);
        }
        return Report(stepped && command->Finalize(), *command);
    });
    // A statement uses its connection wherever the connection was moved, and can be used again after it was moved back.
    list.Add("UseMovedConnectionHoldingAStatement", ArrangeSteppedCommand, {20, 2}, [](Subject& subject) {
        {
            MovedAway<SqlDatabase> connection(*subject.connection);
            if (connection->Close() || connection->GetLastError() != SQLITE_BUSY) {
                return Report(false, *connection);
            }
            SqlCommand reading(*connection);
            if (!StepFirst(reading)) {
                return Report(false, reading);
            }
            subject.text = reading.ColumnText(1);
        }
        SqlCommand& command = *subject.command;
        command.Reset();
        const bool stepped = command.Step();
        subject.integer = command.ColumnInt64(0);
        return Report(stepped && command.HasRowData(), command);
    });
}

} // namespace Morvik::sql::tests
