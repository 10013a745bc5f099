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

constexpr std::array<unsigned char, 6> SixBytes{'l', 'o', 'n', 'g', 'e', 'r'};

using ArrangeCommand = std::function<void(SituationConnection&, SqlCommand&)>;

/// Runs the operation on a command that has the error of an earlier failure. `failing` gives SQLite's result.
template <typename Operation>
Run OnACommand(const ArrangeCommand& arrange, const Operation& operation, const std::string& failing = Violation)
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

auto ExecuteCommand(const std::string& sql)
{
    return [=](SqlCommand& command) { return command.Execute(sql); };
}

auto PrepareCommand(std::string_view sql)
{
    return [=](SqlCommand& command) { return command.Prepare(sql); };
}

std::string TextOfColumn(SqlCommand& command)
{
    return command.ColumnText(0).empty() ? "empty" : "not empty";
}

std::string BlobOfColumn(SqlCommand& command)
{
    return command.ColumnBlob(0).empty() ? "empty" : "not empty";
}

} // namespace

Situations CommandSituations()
{
    const std::string closed = "the connection is closed";
    const std::string noStatement = "no statement is held";
    const std::string noRow = "no row is available";
    const std::string noMemory = "SQLite has no memory for the value";
    const std::string noMemoryToConvert = "SQLite has no memory to convert the value";
    const ArrangeCommand onAText = Stepped("SELECT 'text'");
    const char* const absent = "SELECT absent FROM t"; // the commands keep a view of it
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
        {"SqlCommand::ColumnCount", noRow, OnACommand(Unprepared, [](SqlCommand& c) { return c.ColumnCount(); })},
        {"SqlCommand::ColumnIsNull", noRow, OnACommand(Unprepared, [](SqlCommand& c) { return c.ColumnIsNull(0); })},
        {"SqlCommand::ColumnInt", noRow, OnACommand(Unprepared, [](SqlCommand& c) { return c.ColumnInt(0); })},
        {"SqlCommand::ColumnInt64", noRow, OnACommand(Unprepared, [](SqlCommand& c) { return c.ColumnInt64(0); })},
        {"SqlCommand::ColumnDouble", noRow,
         OnACommand(Unprepared, [](SqlCommand& c) { return c.ColumnDouble(0) == 0.0 ? 0 : 1; })},
        {"SqlCommand::ColumnText", noRow, OnACommand(Unprepared, TextOfColumn)},
        {"SqlCommand::ColumnText", noMemory, OnACommand(onAText, WithNull("sqlite3_column_text", TextOfColumn))},
        {"SqlCommand::ColumnText", noMemoryToConvert,
         OnACommand(onAText, WithNull("sqlite3_column_bytes", TextOfColumn))},
        {"SqlCommand::ColumnBlob", noRow, OnACommand(Unprepared, BlobOfColumn)},
        {"SqlCommand::ColumnBlob", noMemory, OnACommand(onAText, WithNull("sqlite3_column_blob", BlobOfColumn))},
        {"SqlCommand::ColumnBlob", noMemoryToConvert,
         OnACommand(onAText, WithNull("sqlite3_column_bytes", BlobOfColumn))},
    };
    const std::map<std::string, std::function<bool(SqlCommand&, int)>> binds{
        {"BindInteger", [](SqlCommand& command, int index) { return command.BindInteger(index, 1); }},
        {"BindInt64", [](SqlCommand& command, int index) { return command.BindInt64(index, 1); }},
        {"BindDouble", [](SqlCommand& command, int index) { return command.BindDouble(index, 1.5); }},
        {"BindText", [](SqlCommand& command, int index) { return command.BindText(index, "longer"); }},
        {"BindBlob", [](SqlCommand& command, int index) { return command.BindBlob(index, SixBytes); }}};
    for (const auto& [name, bind] : binds) {
        const auto add = [&all, &name = name, &bind = bind](const char* situation, const ArrangeCommand& arrange,
                                                            int index) {
            const auto bindAt = [=](SqlCommand& command) { return bind(command, index); };
            all.push_back({"SqlCommand::" + name, situation, OnACommand(arrange, bindAt)});
        };
        add("no statement is held", Unprepared, 1);
        add("the index is 0", Prepared("SELECT ?"), 0);
        add("the index is too large", Prepared("SELECT ?"), 2);
        add("the statement was stepped and not reset", Stepped("SELECT ?"), 1);
        if (name == "BindText" || name == "BindBlob") {
            add("the value is longer than SQLite's limit", PreparedWithALimit, 1);
        }
    }
    return all;
}

} // namespace Morvik::sql::tests
