// Statements.
#include <sqlite3.h>

#include <span>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Insert = "INSERT INTO t (name, weight) VALUES ('" + AllocatedText + "', 2.5)";
const std::string Rollback = "ROLLBACK";
const std::string Transaction = "BEGIN; INSERT INTO t (name) VALUES ('one'); UPDATE t SET weight = 7; COMMIT";
const std::string Rejected = "INSERT INTO t (weight) VALUES (-1)";
const std::string First = "INSERT INTO room VALUES ('cellar')";
const std::string RejectedAtLast = First + "; " + Rejected;
const std::string CommentAtLast = First + "; -- done";
const std::string BoundInsert = "INSERT INTO t (id, name, weight, picture) VALUES (NULL, ?, ?, ?)";
const std::string Query = "SELECT id, name, weight, picture FROM t WHERE id > ? ORDER BY name, id";
const std::string Utf16Query = "SELECT a FROM t WHERE typeof(a) <> ?";
const std::string Conversions = "SELECT 4294967296, 2.5, substr(?1, 2), CAST(x'6162' AS TEXT), zeroblob(30), upper(?1)";

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
    MakeCommand(subject);
    subject.command->Prepare(Query);
    subject.command->Step();
    subject.command->Reset();
    subject.command->BindInteger(1, 0);
    subject.command->Step();
}

template <const std::string& Sql>
bool Execute(Subject&, SqlCommand& command)
{
    return command.Execute(Sql);
}

template <const std::string& Sql>
bool ExecuteRejected(Subject&, SqlCommand& command)
{
    return !command.Execute(Sql) && command.GetLastError() == SQLITE_CONSTRAINT;
}

} // namespace

void AddCommandScenarios(ScenarioList& list)
{
    list.Add("ConstructCommand", OpenConnection, {0, 1},
             [](Subject& subject) { return Report(true, subject.command.emplace(*subject.connection)); });
    list.Add("ExecuteInsert", MakeCommand, {20, 0}, Command, Execute<Insert>);
    list.Add("ExecuteTransaction", Warm<MakeCommand>, {.ofSqlite = 40, .ofNew = 0, .mayStayLocked = true}, Command,
             [](Subject& subject, SqlCommand& command) {
                 // A transaction that is still open makes the next BEGIN fail.
                 if (sqlite3_get_autocommit(subject.connection->GetNativeDatabaseInstance<sqlite3>()) == 0) {
                     command.Execute(Rollback);
                 }
                 return command.Execute(Transaction);
             });
    list.Add("ExecuteRejectedStatement", Warm<MakeCommand>, {20, 1}, Command, ExecuteRejected<Rejected>);
    list.Add("ExecuteStatementsTheLastOfWhichIsRejected", Warm<MakeCommand>,
             {.ofSqlite = 20, .ofNew = 1, .firstStep = First}, Command, ExecuteRejected<RejectedAtLast>);
    list.Add("ExecuteStatementBeforeAComment", Warm<MakeCommand>, {.ofSqlite = 20, .ofNew = 0, .firstStep = First},
             Command, Execute<CommentAtLast>);
    list.Add("InsertBoundValues", Warm<MakeCommand>, {20, 0}, Command, [](Subject&, SqlCommand& command) {
        const std::span picture(reinterpret_cast<const unsigned char*>(AllocatedText.data()), AllocatedText.size());
        command.Finalize();
        return command.Prepare(BoundInsert) && command.BindText(1, AllocatedText) && command.BindDouble(2, 0.5) &&
               command.BindBlob(3, picture) && command.Step() && command.Reset() && command.ClearBindings() &&
               command.BindInteger(2, 3) && command.BindInt64(3, 1LL << 40) && command.Finalize();
    });
    list.Add("ReadColumns", MakeCommand, {20, 3}, Command, [](Subject& subject, SqlCommand& command) {
        command.Finalize();
        const auto read = [&] {
            subject.integer += command.ColumnInt64(0) + command.ColumnInt(0) + command.ColumnCount();
            subject.text += command.ColumnText(1);
            subject.real += command.ColumnDouble(2);
            const std::span<const unsigned char> picture = command.ColumnBlob(3);
            subject.bytes.insert(subject.bytes.end(), picture.begin(), picture.end());
            subject.result += command.ColumnIsNull(3) ? 1 : 0;
        };
        return command.Prepare(Query) && command.BindInteger(1, 0) && StepRows(command, read) && command.Reset();
    });
    // A failed conversion is reported at the latest by the statement's next Step(), Reset() or Finalize().
    list.Add("ReadConvertedColumns", MakeCommand, {.ofSqlite = 20, .ofNew = 3, .convertsText = true}, Command,
             [](Subject& subject, SqlCommand& command) {
                 command.Finalize();
                 if (!command.Prepare(Conversions) || !command.BindText(1, AllocatedText) || !command.Step()) {
                     return false;
                 }
                 for (int column = 0; column < 6; ++column) {
                     subject.text += command.ColumnText(column);
                 }
                 const std::span<const unsigned char> zeroes = command.ColumnBlob(4);
                 subject.bytes.assign(zeroes.begin(), zeroes.end());
                 return command.Step() && command.Finalize();
             });
    list.Add("ReadUtf16Columns", ArrangeUtf16, {.ofSqlite = 10, .ofNew = 1, .convertsText = true}, Command,
             [](Subject& subject, SqlCommand& command) {
                 command.Finalize();
                 return command.Prepare(Utf16Query) && command.BindText(1, "null") &&
                        StepRows(command, [&] { subject.text += command.ColumnText(0); }) && command.Finalize();
             });
    list.Add("FailStep", MakeCommand, {10, 1}, Command, [](Subject&, SqlCommand& command) {
        command.Finalize();
        return command.Prepare(Overflow) && !command.Step() && command.GetLastError() == SQLITE_ERROR;
    });
    list.Add("MoveCommand", ArrangeSteppedCommand, {0, 0}, Command, [](Subject&, SqlCommand& command) {
        SqlCommand taken(std::move(command));
        command = std::move(taken);
        return command.HasRowData();
    });
    list.Add("DestroyCommandHoldingAStatement", Warm<MakeCommand>, {10, 1}, [](Subject& subject) {
        SqlCommand command(*subject.connection);
        const bool stepped = command.Prepare(Query) && command.BindInt64(1, 0) && command.Step();
        return Report(stepped && command.HasRowData(), command);
    });
}

} // namespace Morvik::sql::tests
