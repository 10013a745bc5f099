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
    subject.connection.emplace();
    subject.connection->Open(":memory:", false);
    subject.command.emplace(*subject.connection);
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

Report Construct(Subject& subject)
{
    return ReportOf(true, subject.command.emplace(*subject.connection));
}

Report DestroyHolding(Subject& subject)
{
    SqlCommand command(*subject.connection);
    const bool stepped = command.Prepare(Query) && command.BindInt64(1, 0) && command.Step();
    return ReportOf(stepped && command.HasRowData(), command);
}

template <const std::string& Sql>
bool Execute(Subject&, SqlCommand& command)
{
    return command.Execute(Sql);
}

// A transaction that is still open makes the next BEGIN fail.
bool ExecuteTransaction(Subject& subject, SqlCommand& command)
{
    if (sqlite3_get_autocommit(subject.connection->GetNativeDatabaseInstance<sqlite3>()) == 0) {
        command.Execute(Rollback);
    }
    return command.Execute(Transaction);
}

template <const std::string& Sql>
bool ExecuteRejected(Subject&, SqlCommand& command)
{
    return !command.Execute(Sql) && command.GetLastError() == SQLITE_CONSTRAINT;
}

bool InsertBound(Subject&, SqlCommand& command)
{
    const auto bytes = std::as_bytes(std::span(AllocatedText));
    const std::span picture(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    command.Finalize();
    return command.Prepare(BoundInsert) && command.BindText(1, AllocatedText) && command.BindDouble(2, 0.5) &&
           command.BindBlob(3, picture) && command.Step() && command.Reset() && command.ClearBindings() &&
           command.BindInteger(2, 3) && command.BindInt64(3, 1LL << 40) && command.Finalize();
}

bool ReadColumns(Subject& subject, SqlCommand& command)
{
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
}

// A failed conversion is reported at the latest by the statement's next Step(), Reset() or Finalize().
bool ReadConverted(Subject& subject, SqlCommand& command)
{
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
}

bool ReadUtf16(Subject& subject, SqlCommand& command)
{
    command.Finalize();
    return command.Prepare(Utf16Query) && command.BindText(1, "null") &&
           StepRows(command, [&] { subject.text += command.ColumnText(0); }) && command.Finalize();
}

bool FailStep(Subject&, SqlCommand& command)
{
    command.Finalize();
    return command.Prepare(Overflow) && !command.Step() && command.GetLastError() == SQLITE_ERROR;
}

bool Move(Subject&, SqlCommand& command)
{
    SqlCommand taken(std::move(command));
    command = std::move(taken);
    return command.HasRowData();
}

} // namespace

std::vector<Scenario> CommandScenarios()
{
    using S = Scenario;
    return {
        S{"ConstructCommand", OpenConnection, {0, 1}, Construct},
        S{"ExecuteInsert", MakeCommand, {20, 0}, On(Command, Execute<Insert>)},
        S{"ExecuteTransaction", MakeWarmCommand, {40, 0}, On(Command, ExecuteTransaction)}.MayStayLocked(),
        S{"ExecuteRejectedStatement", MakeWarmCommand, {20, 1}, On(Command, ExecuteRejected<Rejected>)},
        S{"ExecuteStatementsTheLastOfWhichIsRejected",
          MakeWarmCommand,
          {20, 1},
          On(Command, ExecuteRejected<RejectedAtLast>)}
            .After(First),
        S{"ExecuteStatementBeforeAComment", MakeWarmCommand, {20, 0}, On(Command, Execute<CommentAtLast>)}.After(First),
        S{"InsertBoundValues", MakeWarmCommand, {20, 0}, On(Command, InsertBound)},
        S{"ReadColumns", MakeCommand, {20, 3}, On(Command, ReadColumns)},
        S{"ReadConvertedColumns", MakeCommand, {20, 3}, On(Command, ReadConverted)}.ConvertsText(),
        S{"ReadUtf16Columns", ArrangeUtf16, {10, 1}, On(Command, ReadUtf16)}.ConvertsText(),
        S{"FailStep", MakeCommand, {10, 1}, On(Command, FailStep)},
        S{"MoveCommand", ArrangeSteppedCommand, {0, 0}, On(Command, Move)},
        S{"DestroyCommandHoldingAStatement", MakeWarmCommand, {10, 1}, DestroyHolding},
    };
}

} // namespace Morvik::sql::tests
