// Statements.
#include <sqlite3.h>

#include <span>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string First = "INSERT INTO room VALUES ('cellar')";
const std::string Rejected = "INSERT INTO t (weight) VALUES (-1)";
const std::string Transaction = "BEGIN; INSERT INTO t (name) VALUES ('one'); UPDATE t SET weight = 7; COMMIT";

// Prepares the statement in place of the one that an earlier attempt left.
bool Prepare(SqlCommand& command, std::string_view sql)
{
    command.Finalize();
    return command.Prepare(sql);
}

bool StepFirst(SqlCommand& command)
{
    return Prepare(command, BoundQuery) && command.BindInteger(1, 0) && command.Step();
}

void ArrangeUtf16(Subject& subject)
{
    subject.path = ":memory:";
    MakeCommand(subject);
    subject.command->Execute("PRAGMA encoding = 'UTF-16le'; CREATE TABLE t (a); INSERT INTO t VALUES ('" +
                             AllocatedText + "'); INSERT INTO t VALUES (x'0102')");
    subject.path.clear();
}

void ArrangeSteppedCommand(Subject& subject)
{
    Warm<MakeCommand>(subject);
    StepFirst(*subject.command);
}

auto Execute(const std::string& sql)
{
    return [=](Subject&, SqlCommand& command) { return command.Execute(sql); };
}

auto ExecuteRejected(const std::string& sql)
{
    return [=](Subject&, SqlCommand& command) {
        return !command.Execute(sql) && command.GetLastError() == SQLITE_CONSTRAINT;
    };
}

// Assigns a command that is on its first row, or whose first step failed.
bool Replace(Subject& subject, SqlCommand& command)
{
    SqlCommand source(*subject.connection);
    const bool stepped = StepFirst(source);
    command = std::move(source);
    subject.integer = command.ColumnInt64(0);
    subject.text = command.ColumnText(1);
    return stepped && command.HasRowData();
}

} // namespace

void AddCommandScenarios(ScenarioList& list)
{
    list.Add("ConstructCommand", OpenConnection, {0, 1},
             [](Subject& subject) { return Report(true, subject.command.emplace(*subject.connection)); });
    list.Add("ExecuteInsert", MakeCommand, {20, 0}, Command, Execute(Insert));
    list.Add("ExecuteTransaction", Warm<MakeCommand>, {.ofSqlite = 40, .ofNew = 0, .mayStayLocked = true}, Command,
             [](Subject& subject, SqlCommand& command) {
                 // A transaction that is still open makes the next BEGIN fail.
                 if (sqlite3_get_autocommit(subject.connection->GetNativeDatabaseInstance<sqlite3>()) == 0) {
                     command.Execute("ROLLBACK");
                 }
                 return command.Execute(Transaction);
             });
    list.Add("ExecuteRejectedStatement", Warm<MakeCommand>, {20, 1}, Command, ExecuteRejected(Rejected));
    list.Add("ExecuteStatementsTheLastOfWhichIsRejected", Warm<MakeCommand>,
             {.ofSqlite = 20, .ofNew = 1, .firstStep = First}, Command, ExecuteRejected(First + "; " + Rejected));
    list.Add("ExecuteStatementBeforeAComment", Warm<MakeCommand>, {.ofSqlite = 20, .ofNew = 0, .firstStep = First},
             Command, Execute(First + "; -- done"));
    list.Add("InsertBoundValues", Warm<MakeCommand>, {20, 0}, Command, [](Subject&, SqlCommand& command) {
        const std::span picture(reinterpret_cast<const unsigned char*>(AllocatedText.data()), AllocatedText.size());
        return Prepare(command, "INSERT INTO t (id, name, weight, picture) VALUES (NULL, ?, ?, ?)") &&
               command.BindText(1, AllocatedText) && command.BindDouble(2, 0.5) && command.BindBlob(3, picture) &&
               command.Step() && command.Reset() && command.ClearBindings() && command.BindInteger(2, 3) &&
               command.BindInt64(3, 1LL << 40) && command.Finalize();
    });
    list.Add("ReadColumns", MakeCommand, {20, 3}, Command, [](Subject& subject, SqlCommand& command) {
        const auto read = [&] {
            subject.integer += command.ColumnInt64(0) + command.ColumnInt(0) + command.ColumnCount();
            subject.Note(command.ColumnText(1));
            subject.Note(command.ColumnDouble(2));
            subject.Note(command.ColumnBlob(3));
            subject.result += command.ColumnIsNull(3) ? 1 : 0;
        };
        return Prepare(command, BoundQuery) && command.BindInteger(1, 0) && StepRows(command, read) && command.Reset();
    });
    // A failed conversion is reported at the latest by the statement's next Step(), Reset() or Finalize().
    list.Add("ReadConvertedColumns", MakeCommand, {.ofSqlite = 20, .ofNew = 3, .errorsOfSqlite = {BadAlloc}}, Command,
             [](Subject& subject, SqlCommand& command) {
                 const auto read = [&] {
                     for (int column = 0; column < 6; ++column) {
                         subject.Note(command.ColumnText(column));
                     }
                     subject.Note(command.ColumnBlob(4));
                 };
                 return Prepare(command, "SELECT 4294967296, 2.5, substr(?1, 2), CAST(x'6162' AS TEXT), zeroblob(30), "
                                         "upper(?1)") &&
                        command.BindText(1, AllocatedText) && StepRows(command, read) && command.Finalize();
             });
    list.Add("ReadUtf16Columns", ArrangeUtf16, {.ofSqlite = 10, .ofNew = 1, .errorsOfSqlite = {BadAlloc}}, Command,
             [](Subject& subject, SqlCommand& command) {
                 return Prepare(command, "SELECT a FROM t WHERE typeof(a) <> ?") && command.BindText(1, "null") &&
                        StepRows(command, [&] { subject.Note(command.ColumnText(0)); }) && command.Finalize();
             });
    list.Add("FailStep", MakeCommand, {10, 1}, Command, [](Subject&, SqlCommand& command) {
        return Prepare(command, Overflow) && !command.Step() && command.GetLastError() == SQLITE_ERROR;
    });
    list.Add("DestroyCommandHoldingAStatement", Warm<MakeCommand>, {10, 1}, [](Subject& subject) {
        SqlCommand command(*subject.connection);
        return Report(StepFirst(command) && command.HasRowData(), command);
    });

    list.Add("MoveCommand", ArrangeSteppedCommand, {0, 0}, Command, [](Subject&, SqlCommand& command) {
        SqlCommand taken(std::move(command));
        command = std::move(taken);
        return command.HasRowData();
    });
    list.Add("MoveOntoACommandHoldingAStatement", ArrangeSteppedCommand, {20, 1}, Command, Replace);
    list.Add("MoveOntoAFailedCommand", Warm<MakeCommand>, {20, 2}, Command, [](Subject& subject, SqlCommand& command) {
        return Prepare(command, Overflow) && !command.Step() && Replace(subject, command);
    });
    list.Add("StepMovedCommand", Warm<MakeCommand>, {20, 2}, Command, [](Subject& subject, SqlCommand& command) {
        if (!Prepare(command, BoundQuery) || !command.BindInteger(1, 0)) {
            return false;
        }
        MovedAway<SqlCommand> moved(command);
        const auto read = [&] {
            subject.integer += moved->ColumnInt64(0);
            subject.Note(moved->ColumnText(1));
        };
        return StepRows(*moved, read) && moved->Finalize();
    });
    // A moved connection accepts new statements. Its earlier statement can be used after the connection is moved back.
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
