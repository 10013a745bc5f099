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
    MakeWarmCursor(subject);
    subject.cursor->Open(Query);
    subject.cursor->ReadNext();
}

bool StepFirst(SqlCommand& command)
{
    return command.Prepare(BoundQuery) && command.BindInteger(1, 0) && command.Step();
}

void ArrangeSteppedCommand(Subject& subject)
{
    MakeWarmCommand(subject);
    StepFirst(*subject.command);
}

// Assigning to a cursor closes the query that it holds; the error of that closing is discarded.
Report ReplaceCursor(Subject& subject)
{
    SqlTable source(*subject.connection);
    if (!source.Open(OtherQuery) || !source.ReadNext()) {
        return ReportOf(false, source);
    }
    NoDestructor<SqlTable> closed(*subject.connection);

    SqlTable& cursor = *subject.cursor;
    cursor = std::move(source);
    source = std::move(*closed);

    subject.text = cursor.GetText(0);
    return ReportOf(cursor.IsOpen() && cursor.GetLastError() == SQLITE_ROW, cursor);
}

Report ReplaceFailedCursor(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    if (!cursor.Open(Overflow)) {
        return ReportOf(false, cursor);
    }
    return cursor.ReadNext() ? ReportOf(false, cursor) : ReplaceCursor(subject);
}

Report ReplaceCommand(Subject& subject)
{
    SqlCommand source(*subject.connection);
    if (!StepFirst(source)) {
        return ReportOf(false, source);
    }

    SqlCommand& command = *subject.command;
    command = std::move(source);

    subject.integer = command.ColumnInt64(0);
    subject.text = command.ColumnText(1);
    return ReportOf(command.HasRowData(), command);
}

Report ReplaceFailedCommand(Subject& subject)
{
    SqlCommand& command = *subject.command;
    command.Finalize();
    if (!command.Prepare(Overflow)) {
        return ReportOf(false, command);
    }
    return command.Step() ? ReportOf(false, command) : ReplaceCommand(subject);
}

Report WalkMovedCursor(Subject& subject)
{
    if (!subject.cursor->Open(Query)) {
        return ReportOf(false, *subject.cursor);
    }
    if (!subject.cursor->ReadNext()) {
        subject.cursor->Close(); // leaves the code of the failure
        return ReportOf(false, *subject.cursor);
    }
    MovedAway<SqlTable> cursor(*subject.cursor);
    do {
        subject.integer += cursor->GetInt64(0);
        subject.text += cursor->GetText(1);
    } while (cursor->ReadNext());
    const bool ended = cursor->GetLastError() == SQLITE_OK;
    const bool closed = cursor->Close();
    return ReportOf(ended && closed, *cursor);
}

Report StepMovedCommand(Subject& subject)
{
    subject.command->Finalize();
    if (!StepFirst(*subject.command)) {
        return ReportOf(false, *subject.command);
    }
    MovedAway<SqlCommand> command(*subject.command);
    bool stepped = true;
    for (; stepped && command->HasRowData(); stepped = command->Step()) {
        subject.integer += command->ColumnInt64(0);
        subject.text += command->ColumnText(1);
    }
    return ReportOf(stepped && command->Finalize(), *command);
}

// A statement uses its connection wherever the connection was moved, and can be used again after it was moved back.
Report UseMovedConnection(Subject& subject)
{
    {
        MovedAway<SqlDatabase> connection(*subject.connection);
        if (connection->Close() || connection->GetLastError() != SQLITE_BUSY) {
            return ReportOf(false, *connection);
        }
        SqlCommand reading(*connection);
        if (!StepFirst(reading)) {
            return ReportOf(false, reading);
        }
        subject.text = reading.ColumnText(1);
    }
    SqlCommand& command = *subject.command;
    command.Reset();
    const bool stepped = command.Step();
    subject.integer = command.ColumnInt64(0);
    return ReportOf(stepped && command.HasRowData(), command);
}

} // namespace

std::vector<Scenario> MoveScenarios()
{
    using S = Scenario;
    return {
        S{"MoveOntoAnOpenCursor", ArrangeOpenCursor, {20, 2}, ReplaceCursor}.WithoutSqlite(FailedStep),
        S{"MoveOntoAFailedCursor", MakeWarmCursor, {20, 3}, ReplaceFailedCursor}.WithoutSqlite(FailedStep),
        S{"MoveOntoACommandHoldingAStatement", ArrangeSteppedCommand, {20, 1}, ReplaceCommand},
        S{"MoveOntoAFailedCommand", MakeWarmCommand, {20, 2}, ReplaceFailedCommand},
        S{"WalkMovedCursor", MakeWarmCursor, {20, 3}, WalkMovedCursor},
        S{"StepMovedCommand", MakeWarmCommand, {20, 2}, StepMovedCommand},
        S{"UseMovedConnectionHoldingAStatement", ArrangeSteppedCommand, {20, 2}, UseMovedConnection},
    };
}

} // namespace Morvik::sql::tests
