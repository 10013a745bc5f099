#include <sqlite3.h>

#include <span>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Insert = "INSERT INTO t (name, weight) VALUES ('" + LongText + "', 2.5)";
const std::string Rollback = "ROLLBACK";
const std::string Transaction = "BEGIN; INSERT INTO t (name) VALUES ('one'); UPDATE t SET weight = 7; COMMIT";
const std::string Rejected = "INSERT INTO t (weight) VALUES (-1)";
const std::string First = "INSERT INTO room VALUES ('cellar')";
const std::string RejectedAtLast = First + "; INSERT INTO t (weight) VALUES (-1)";
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
    subject.command->Execute("PRAGMA encoding = 'UTF-16le'; CREATE TABLE t (a); INSERT INTO t VALUES ('" + LongText +
                             "'); INSERT INTO t VALUES (x'0102')");
    subject.path.clear();
}

Report Construct(Subject& subject)
{
    subject.command.emplace(*subject.connection);
    return ReportOf(true, *subject.command);
}

template <const std::string& Sql>
Report Execute(Subject& subject)
{
    return ReportOf(subject.command->Execute(Sql), *subject.command);
}

// A transaction that is still open makes the next BEGIN fail.
Report ExecuteTransaction(Subject& subject)
{
    if (sqlite3_get_autocommit(subject.connection->GetNativeDatabaseInstance<sqlite3>()) == 0) {
        subject.command->Execute(Rollback);
    }
    return Execute<Transaction>(subject);
}

template <const std::string& Sql>
Report ExecuteRejected(Subject& subject)
{
    SqlCommand& command = *subject.command;
    const bool executed = command.Execute(Sql);
    return ReportOf(!executed && command.GetLastError() == SQLITE_CONSTRAINT, command);
}

Report InsertBound(Subject& subject)
{
    SqlCommand& command = *subject.command;
    const auto bytes = std::as_bytes(std::span(LongText));
    const std::span picture(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    command.Finalize();
    const bool inserted = command.Prepare(BoundInsert) && command.BindText(1, LongText) && command.BindDouble(2, 0.5) &&
                          command.BindBlob(3, picture) && command.Step() && command.Reset() &&
                          command.ClearBindings() && command.BindInteger(2, 3) && command.BindInt64(3, 1LL << 40) &&
                          command.Finalize();
    return ReportOf(inserted, command);
}

Report ReadColumns(Subject& subject)
{
    SqlCommand& command = *subject.command;
    command.Finalize();
    const bool read = command.Prepare(Query) && command.BindInteger(1, 0) && StepRows(command, [&] {
                          subject.integer += command.ColumnInt64(0) + command.ColumnInt(0) + command.ColumnCount();
                          subject.text += command.ColumnText(1);
                          subject.real += command.ColumnDouble(2);
                          const std::span<const unsigned char> picture = command.ColumnBlob(3);
                          subject.bytes.insert(subject.bytes.end(), picture.begin(), picture.end());
                          subject.result += command.ColumnIsNull(3) ? 1 : 0;
                      });
    return ReportOf(read && command.Reset(), command);
}

// A failed conversion shows at the latest in the code of the statement's next Step(), Reset() or Finalize().
Report ReadConverted(Subject& subject)
{
    SqlCommand& command = *subject.command;
    command.Finalize();
    if (!command.Prepare(Conversions) || !command.BindText(1, LongText) || !command.Step()) {
        return ReportOf(false, command);
    }
    for (int column = 0; column < 6; ++column) {
        subject.text += command.ColumnText(column);
    }
    const std::span<const unsigned char> zeroes = command.ColumnBlob(4);
    subject.bytes.assign(zeroes.begin(), zeroes.end());
    return ReportOf(command.Step() && command.Finalize(), command);
}

Report ReadUtf16(Subject& subject)
{
    SqlCommand& command = *subject.command;
    command.Finalize();
    const bool read = command.Prepare(Utf16Query) && command.BindText(1, "null") &&
                      StepRows(command, [&] { subject.text += command.ColumnText(0); });
    return ReportOf(read && command.Finalize(), command);
}

Report FailStep(Subject& subject)
{
    SqlCommand& command = *subject.command;
    command.Finalize();
    const bool stepped = command.Prepare(Overflow) && command.Step();
    return ReportOf(!stepped && command.GetLastError() == SQLITE_ERROR, command);
}

Report Move(Subject& subject)
{
    SqlCommand taken(std::move(*subject.command));
    *subject.command = std::move(taken);
    return ReportOf(subject.command->HasRowData(), *subject.command);
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

Report DestroyHolding(Subject& subject)
{
    SqlCommand command(*subject.connection);
    const bool stepped = command.Prepare(Query) && command.BindInt64(1, 0) && command.Step();
    return ReportOf(stepped && command.HasRowData(), command);
}

} // namespace

std::vector<Scenario> CommandScenarios()
{
    using S = Scenario;
    return {
        S{"ConstructCommand", OpenConnection, Construct, {0, 1}},
        S{"ExecuteInsert", MakeCommand, Execute<Insert>, {20, 0}},
        S{"ExecuteTransaction", MakeWarmCommand, ExecuteTransaction, {40, 0}}.MayStayLocked(),
        S{"ExecuteRejectedStatement", MakeWarmCommand, ExecuteRejected<Rejected>, {20, 1}},
        S{"ExecuteStatementsTheLastOfWhichIsRejected", MakeWarmCommand, ExecuteRejected<RejectedAtLast>, {20, 1}}.After(
            First),
        S{"ExecuteStatementBeforeAComment", MakeWarmCommand, Execute<CommentAtLast>, {20, 0}}.After(First),
        S{"InsertBoundValues", MakeWarmCommand, InsertBound, {20, 0}},
        S{"ReadColumns", MakeCommand, ReadColumns, {20, 3}},
        S{"ReadConvertedColumns", MakeCommand, ReadConverted, {20, 3}}.ConvertsText(),
        S{"ReadUtf16Columns", ArrangeUtf16, ReadUtf16, {10, 1}}.ConvertsText(),
        S{"FailStep", MakeCommand, FailStep, {10, 1}},
        S{"MoveCommand", ArrangeSteppedCommand, Move, {0, 0}},
        S{"DestroyCommandHoldingAStatement", MakeWarmCommand, DestroyHolding, {10, 1}},
    };
}

} // namespace Morvik::sql::tests
