#include <sql/SqlCommand.h>

#include <sqlite3.h>

#include <array>
#include <string>
#include <string_view>

#include "docs/codes/Situation.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string Violation = "INSERT INTO t VALUES (1)";

constexpr std::array<unsigned char, 6> SixBytes{'l', 'o', 'n', 'g', 'e', 'r'};

Run ExecutingACommand(const std::string& sql, bool open = true)
{
    return [=] {
        SituationConnection connection(open);
        SqlCommand command(connection.database);
        return Observe(command, FailureOfExec(connection.raw.Handle(), sql), [&] { return command.Execute(sql); });
    };
}

/// Prepares a command that has an earlier error. On a closed connection only another Prepare can leave an error.
Run Preparing(std::string_view sql, bool open = true)
{
    return [=] {
        SituationConnection connection(open);
        SqlCommand command(connection.database);
        open ? command.Execute("nonsense") : command.Prepare("SELECT 1");
        return Observe(command, FailureOfPrepare(connection.raw.Handle(), std::string(sql)),
                       [&] { return command.Prepare(sql); });
    };
}

using CommandOperation = std::function<std::string(SqlCommand&)>;
using ArrangeCommand = std::function<void(SituationConnection&, SqlCommand&)>;

/// Runs the operation on a command that has the error of an earlier failure.
Run OnACommand(const ArrangeCommand& arrange, const CommandOperation& operation)
{
    return [=] {
        SituationConnection connection;
        SqlCommand command(connection.database);
        command.Execute("nonsense");
        arrange(connection, command);
        return Observe(command, FailureOfExec(connection.raw.Handle(), Violation), [&] { return operation(command); });
    };
}

ArrangeCommand Prepared(const std::string& sql)
{
    return [=](SituationConnection&, SqlCommand& command) { command.Prepare(sql); };
}

ArrangeCommand Stepped(const std::string& sql)
{
    return [=](SituationConnection&, SqlCommand& command) {
        command.Prepare(sql);
        command.Step();
    };
}

void Unprepared(SituationConnection& /*connection*/, SqlCommand& /*command*/) {}

void PreparedWithALimit(SituationConnection& connection, SqlCommand& command)
{
    command.Prepare("SELECT ?");
    sqlite3_limit(connection.database.GetNativeDatabaseInstance<sqlite3>(), SQLITE_LIMIT_LENGTH, 5);
}

Run WithoutMemory(const std::string& function, const CommandOperation& operation)
{
    return OnACommand(Stepped("SELECT 'text'"), [=](SqlCommand& command) {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(function, 0, false);
        return operation(command);
    });
}

std::string EmptyOrNot(bool empty)
{
    return empty ? "empty" : "not empty";
}

/// A member function without parameters.
template <typename Returned>
CommandOperation Call(Returned (SqlCommand::*member)())
{
    return [=](SqlCommand& command) { return ReturnedText((command.*member)()); };
}

} // namespace

Situations CommandSituations()
{
    const CommandOperation text = [](SqlCommand& command) { return EmptyOrNot(command.ColumnText(0).empty()); };
    const CommandOperation blob = [](SqlCommand& command) { return EmptyOrNot(command.ColumnBlob(0).empty()); };
    const CommandOperation step = Call(&SqlCommand::Step);
    const CommandOperation reset = Call(&SqlCommand::Reset);
    const CommandOperation finalize = Call(&SqlCommand::Finalize);
    const CommandOperation prepare = [](SqlCommand& command) { return ReturnedText(command.Prepare("SELECT 2")); };
    Situations all{
        {"SqlCommand::Execute", "SQLite rejects the text", ExecutingACommand("nonsense")},
        {"SqlCommand::Execute", "a constraint is violated", ExecutingACommand(Violation)},
        {"SqlCommand::Execute", "the connection is closed", ExecutingACommand("SELECT 1", false)},
        {"SqlCommand::Prepare", "a statement is held already", OnACommand(Prepared("SELECT 1"), prepare)},
        {"SqlCommand::Prepare", "SQLite rejects the text", Preparing("SELECT absent FROM t")},
        {"SqlCommand::Prepare", "the connection is closed", Preparing("SELECT 1", false)},
        {"SqlCommand::Prepare", "the view has no data", Preparing(std::string_view())},
        {"SqlCommand::Step", "the step fails", OnACommand(Prepared(Violation), step)},
        {"SqlCommand::Reset", "the last step failed", OnACommand(Stepped(Violation), reset)},
        {"SqlCommand::Finalize", "the last step failed", OnACommand(Stepped(Violation), finalize)},
        {"SqlCommand::ColumnText", "SQLite has no memory for the value", WithoutMemory("sqlite3_column_text", text)},
        {"SqlCommand::ColumnBlob", "SQLite has no memory for the value", WithoutMemory("sqlite3_column_blob", blob)},
        {"SqlCommand::ColumnText", "SQLite has no memory to convert the value",
         WithoutMemory("sqlite3_column_bytes", text)},
        {"SqlCommand::ColumnBlob", "SQLite has no memory to convert the value",
         WithoutMemory("sqlite3_column_bytes", blob)},
    };
    const std::map<std::string, CommandOperation> ofAStatement{
        {"ClearBindings", Call(&SqlCommand::ClearBindings)}, {"Step", step}, {"Reset", reset}, {"Finalize", finalize}};
    for (const auto& [name, operation] : ofAStatement) {
        all.push_back({"SqlCommand::" + name, "no statement is held", OnACommand(Unprepared, operation)});
    }
    const std::map<std::string, CommandOperation> ofARow{
        {"ColumnCount", [](SqlCommand& command) { return ReturnedText(command.ColumnCount()); }},
        {"ColumnIsNull", [](SqlCommand& command) { return ReturnedText(command.ColumnIsNull(0)); }},
        {"ColumnInt", [](SqlCommand& command) { return ReturnedText(command.ColumnInt(0)); }},
        {"ColumnInt64", [](SqlCommand& command) { return ReturnedText(command.ColumnInt64(0)); }},
        {"ColumnDouble", [](SqlCommand& command) { return ReturnedText(command.ColumnDouble(0) == 0.0 ? 0 : 1); }},
        {"ColumnText", text},
        {"ColumnBlob", blob}};
    for (const auto& [name, operation] : ofARow) {
        all.push_back({"SqlCommand::" + name, "no row is available", OnACommand(Unprepared, operation)});
    }
    const std::map<std::string, std::function<bool(SqlCommand&, int)>> binds{
        {"BindInteger", [](SqlCommand& command, int index) { return command.BindInteger(index, 1); }},
        {"BindInt64", [](SqlCommand& command, int index) { return command.BindInt64(index, 1); }},
        {"BindDouble", [](SqlCommand& command, int index) { return command.BindDouble(index, 1.5); }},
        {"BindText", [](SqlCommand& command, int index) { return command.BindText(index, "longer"); }},
        {"BindBlob", [](SqlCommand& command, int index) { return command.BindBlob(index, SixBytes); }}};
    for (const auto& [name, bind] : binds) {
        const std::string operation = "SqlCommand::" + name;
        const auto at = [bind = bind](int index) -> CommandOperation {
            return [=](SqlCommand& command) { return ReturnedText(bind(command, index)); };
        };
        all.push_back({operation, "no statement is held", OnACommand(Unprepared, at(1))});
        all.push_back({operation, "the index is 0", OnACommand(Prepared("SELECT ?"), at(0))});
        all.push_back({operation, "the index is too large", OnACommand(Prepared("SELECT ?"), at(2))});
        all.push_back({operation, "the statement was stepped and not reset", OnACommand(Stepped("SELECT ?"), at(1))});
        if (name == "BindText" || name == "BindBlob") {
            all.push_back(
                {operation, "the value is longer than SQLite's limit", OnACommand(PreparedWithALimit, at(1))});
        }
    }
    return all;
}

} // namespace Morvik::sql::tests
