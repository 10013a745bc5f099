#include <sql/SqlCommand.h>

#include <sqlite3.h>

#include <string>
#include <string_view>

#include "docs/codes/SituationConnection.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string Violation = "INSERT INTO t VALUES (1)";

/// A command on a separate connection; its record holds an earlier failure.
struct CommandWithAFailure : SituationConnection {
    explicit CommandWithAFailure(bool open = true) : SituationConnection(open)
    {
        if (open) {
            command.Execute("nonsense");
        } else {
            command.Prepare("SELECT 1"); // leaves 21 and no message; a closed connection allows no other failure
        }
    }

    SqlCommand command{database};
};

std::function<Outcome()> Executing(const std::string& sql, bool open = true)
{
    return [=] {
        SituationConnection connection(open);
        SqlCommand command(connection.database);
        return Observe(
            command, [&] { return command.Execute(sql); }, FailureOfExec(connection.plain.Handle(), sql));
    };
}

std::function<Outcome()> Preparing(std::string_view sql, bool open = true)
{
    return [=] {
        CommandWithAFailure holder(open);
        return Observe(
            holder.command, [&] { return holder.command.Prepare(sql); },
            FailureOfPrepare(holder.plain.Handle(), std::string(sql)));
    };
}

Outcome PreparedTwice()
{
    CommandWithAFailure holder;
    holder.command.Prepare("SELECT 1");
    return Observe(holder.command, [&] { return holder.command.Prepare("SELECT 2"); });
}

template <typename Operation>
std::function<Outcome()> WithoutAStatement(Operation operation)
{
    return [=] {
        CommandWithAFailure holder;
        return Observe(holder.command, [&] { return operation(holder.command); });
    };
}

Outcome FailedStep()
{
    SituationConnection connection;
    SqlCommand command(connection.database);
    command.Prepare(Violation);
    return Observe(
        command, [&] { return command.Step(); }, FailureOfExec(connection.plain.Handle(), Violation));
}

template <typename Operation>
std::function<Outcome()> AfterAFailedStep(Operation operation)
{
    return [=] {
        SituationConnection connection;
        SqlCommand command(connection.database);
        command.Prepare(Violation);
        command.Step();
        return Observe(
            command, [&] { return operation(command); }, FailureOfExec(connection.plain.Handle(), Violation));
    };
}

template <typename Operation>
std::function<Outcome()> WithoutMemory(const std::string& function, Operation operation)
{
    return [=] {
        SituationConnection connection;
        SqlCommand command(connection.database);
        command.Prepare("SELECT 'text'");
        command.Step();
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(function, 0, false);
        return Observe(command, [&] { return operation(command); });
    };
}

std::string EmptyOrNot(bool empty)
{
    return empty ? "empty" : "not empty";
}

constexpr auto Step = [](SqlCommand& command) { return command.Step(); };
constexpr auto Reset = [](SqlCommand& command) { return command.Reset(); };
constexpr auto Finalize = [](SqlCommand& command) { return command.Finalize(); };
constexpr auto ClearBindings = [](SqlCommand& command) { return command.ClearBindings(); };
constexpr auto Count = [](SqlCommand& command) { return command.ColumnCount(); };
constexpr auto IsNull = [](SqlCommand& command) { return command.ColumnIsNull(0); };
constexpr auto Int = [](SqlCommand& command) { return command.ColumnInt(0); };
constexpr auto Int64 = [](SqlCommand& command) { return std::to_string(command.ColumnInt64(0)); };
constexpr auto Double = [](SqlCommand& command) { return command.ColumnDouble(0) == 0.0 ? 0 : 1; };
constexpr auto Text = [](SqlCommand& command) { return EmptyOrNot(command.ColumnText(0).empty()); };
constexpr auto Blob = [](SqlCommand& command) { return EmptyOrNot(command.ColumnBlob(0).empty()); };

} // namespace

Situations CommandSituations()
{
    return {
        {"SqlCommand::Execute", "SQLite rejects the text", Executing("nonsense")},
        {"SqlCommand::Execute", "a constraint is violated", Executing(Violation)},
        {"SqlCommand::Execute", "the connection is closed", Executing("SELECT 1", false)},
        {"SqlCommand::Prepare", "a statement is held already", PreparedTwice},
        {"SqlCommand::Prepare", "SQLite rejects the text", Preparing("SELECT absent FROM t")},
        {"SqlCommand::Prepare", "the connection is closed", Preparing("SELECT 1", false)},
        {"SqlCommand::Prepare", "the view has no data", Preparing(std::string_view())},
        {"SqlCommand::ClearBindings", "no statement is held", WithoutAStatement(ClearBindings)},
        {"SqlCommand::Step", "no statement is held", WithoutAStatement(Step)},
        {"SqlCommand::Reset", "no statement is held", WithoutAStatement(Reset)},
        {"SqlCommand::Finalize", "no statement is held", WithoutAStatement(Finalize)},
        {"SqlCommand::Step", "the step fails", FailedStep},
        {"SqlCommand::Reset", "the last step failed", AfterAFailedStep(Reset)},
        {"SqlCommand::Finalize", "the last step failed", AfterAFailedStep(Finalize)},
        {"SqlCommand::ColumnCount", "no row is available", WithoutAStatement(Count)},
        {"SqlCommand::ColumnIsNull", "no row is available", WithoutAStatement(IsNull)},
        {"SqlCommand::ColumnInt", "no row is available", WithoutAStatement(Int)},
        {"SqlCommand::ColumnInt64", "no row is available", WithoutAStatement(Int64)},
        {"SqlCommand::ColumnDouble", "no row is available", WithoutAStatement(Double)},
        {"SqlCommand::ColumnText", "no row is available", WithoutAStatement(Text)},
        {"SqlCommand::ColumnBlob", "no row is available", WithoutAStatement(Blob)},
        {"SqlCommand::ColumnText", "SQLite has no memory for the value", WithoutMemory("sqlite3_column_text", Text)},
        {"SqlCommand::ColumnBlob", "SQLite has no memory for the value", WithoutMemory("sqlite3_column_blob", Blob)},
        {"SqlCommand::ColumnText", "SQLite has no memory to convert the value",
         WithoutMemory("sqlite3_column_bytes", Text)},
        {"SqlCommand::ColumnBlob", "SQLite has no memory to convert the value",
         WithoutMemory("sqlite3_column_bytes", Blob)},
    };
}

} // namespace Morvik::sql::tests
