#include <sql/SqlCommand.h>

#include <array>
#include <functional>
#include <string>
#include <string_view>

#include <sqlite3.h>

#include "docs/codes/Situation.h"

namespace Morvik::sql::tests {

namespace {

const std::string Violation = "INSERT INTO t VALUES (1)";

using ArrangeCommand = std::function<void(SituationConnection&, SqlCommand&)>;

/// Runs the operation on a command that has the error of an earlier failure. SQLite's result is that of `failing`.
template <typename Operation>
Run OnACommand(const ArrangeCommand& arrange, Operation operation, const std::string& failing = Violation)
{
    return [=] {
        SituationConnection connection;
        SqlCommand command(connection.database);
        command.Execute("nonsense");
        arrange(connection, command);
        return Observe(command, FailureOfExec(connection.raw.Handle(), failing),
                       [&] { return std::invoke(operation, command); });
    };
}

void Unprepared(SituationConnection& /*connection*/, SqlCommand& /*command*/) {}

void CloseTheConnection(SituationConnection& connection, SqlCommand& /*command*/)
{
    connection.database.Close();
}

ArrangeCommand Prepared(const std::string& sql)
{
    return [=](SituationConnection&, SqlCommand& command) { command.Prepare(sql); };
}

void PreparedWithALimit(SituationConnection& connection, SqlCommand& command)
{
    command.Prepare("SELECT ?");
    sqlite3_limit(connection.database.GetNativeDatabaseInstance<sqlite3>(), SQLITE_LIMIT_LENGTH, 5);
}

ArrangeCommand Stepped(const std::string& sql)
{
    return [=](SituationConnection&, SqlCommand& command) {
        command.Prepare(sql);
        command.Step();
    };
}

constexpr auto ExecuteCommand = Call<&SqlCommand::Execute>;
constexpr auto PrepareCommand = Call<&SqlCommand::Prepare>;
constexpr auto ReadText = Call<&SqlCommand::ColumnText>(0);
constexpr auto ReadBlob = Call<&SqlCommand::ColumnBlob>(0);

} // namespace

Situations CommandSituations()
{
    const std::string closed = "the connection is closed";
    const std::string noStatement = "no statement is held";
    const std::string noRow = "no row is available";
    const std::string noMemory = "SQLite has no memory for the value";
    const std::string noMemoryToConvert = "SQLite has no memory to convert the value";
    const ArrangeCommand onAText = Stepped("SELECT 'text'");
    const char* const absent = "SELECT absent FROM t";
    Situations all{
        {"SqlCommand::Execute", "SQLite rejects the text",
         OnACommand(Unprepared, ExecuteCommand("nonsense"), "nonsense")},
        {"SqlCommand::Execute", "a constraint is violated", OnACommand(Unprepared, ExecuteCommand(Violation))},
        {"SqlCommand::Execute", closed, OnACommand(CloseTheConnection, ExecuteCommand("SELECT 1"))},
        {"SqlCommand::Prepare", "a statement is held already",
         OnACommand(Prepared("SELECT 1"), PrepareCommand("SELECT 2"))},
        {"SqlCommand::Prepare", "SQLite rejects the text", OnACommand(Unprepared, PrepareCommand(absent), absent)},
        {"SqlCommand::Prepare", closed, OnACommand(CloseTheConnection, PrepareCommand("SELECT 1"))},
        {"SqlCommand::Prepare", "the view has no data", OnACommand(Unprepared, PrepareCommand(std::string_view()))},
        {"SqlCommand::ClearBindings", noStatement, OnACommand(Unprepared, &SqlCommand::ClearBindings)},
        {"SqlCommand::Step", noStatement, OnACommand(Unprepared, &SqlCommand::Step)},
        {"SqlCommand::Step", "the step fails", OnACommand(Prepared(Violation), &SqlCommand::Step)},
        {"SqlCommand::Reset", noStatement, OnACommand(Unprepared, &SqlCommand::Reset)},
        {"SqlCommand::Reset", "the last step failed", OnACommand(Stepped(Violation), &SqlCommand::Reset)},
        {"SqlCommand::Finalize", noStatement, OnACommand(Unprepared, &SqlCommand::Finalize)},
        {"SqlCommand::Finalize", "the last step failed", OnACommand(Stepped(Violation), &SqlCommand::Finalize)},
        {"SqlCommand::ColumnCount", noRow, OnACommand(Unprepared, &SqlCommand::ColumnCount)},
        {"SqlCommand::ColumnIsNull", noRow, OnACommand(Unprepared, Call<&SqlCommand::ColumnIsNull>(0))},
        {"SqlCommand::ColumnInt", noRow, OnACommand(Unprepared, Call<&SqlCommand::ColumnInt>(0))},
        {"SqlCommand::ColumnInt64", noRow, OnACommand(Unprepared, Call<&SqlCommand::ColumnInt64>(0))},
        {"SqlCommand::ColumnDouble", noRow, OnACommand(Unprepared, Call<&SqlCommand::ColumnDouble>(0))},
        {"SqlCommand::ColumnText", noRow, OnACommand(Unprepared, ReadText)},
        {"SqlCommand::ColumnText", noMemory, OnACommand(onAText, WithNull("sqlite3_column_text", ReadText))},
        {"SqlCommand::ColumnText", noMemoryToConvert, OnACommand(onAText, WithNull("sqlite3_column_bytes", ReadText))},
        {"SqlCommand::ColumnBlob", noRow, OnACommand(Unprepared, ReadBlob)},
        {"SqlCommand::ColumnBlob", noMemory, OnACommand(onAText, WithNull("sqlite3_column_blob", ReadBlob))},
        {"SqlCommand::ColumnBlob", noMemoryToConvert, OnACommand(onAText, WithNull("sqlite3_column_bytes", ReadBlob))},
    };
    const std::map<std::string, std::function<bool(SqlCommand&, int)>> binds{
        {"BindInteger", [](SqlCommand& command, int index) { return command.BindInteger(index, 1); }},
        {"BindInt64", [](SqlCommand& command, int index) { return command.BindInt64(index, 1); }},
        {"BindDouble", [](SqlCommand& command, int index) { return command.BindDouble(index, 1.5); }},
        {"BindText", [](SqlCommand& command, int index) { return command.BindText(index, "longer"); }},
        {"BindBlob",
         [](SqlCommand& command, int index) { return command.BindBlob(index, std::array<unsigned char, 6>()); }}};
    for (const auto& bind : binds) {
        const auto add = [&](const char* situation, const ArrangeCommand& arrange, int index) {
            const auto bindAt = [=, run = bind.second](SqlCommand& command) { return run(command, index); };
            all.push_back({"SqlCommand::" + bind.first, situation, OnACommand(arrange, bindAt)});
        };
        add("no statement is held", Unprepared, 1);
        add("the index is 0", Prepared("SELECT ?"), 0);
        add("the index is too large", Prepared("SELECT ?"), 2);
        add("the statement was stepped and not reset", Stepped("SELECT ?"), 1);
        if (bind.first == "BindText" || bind.first == "BindBlob") {
            add("the value is longer than SQLite's limit", PreparedWithALimit, 1);
        }
    }
    return all;
}

} // namespace Morvik::sql::tests
