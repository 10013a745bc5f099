#include <sql/SqlTable.h>

#include <sqlite3.h>

#include <string>

#include "docs/codes/Situation.h"
#include "support/AbandonedConnection.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string Overflow = "SELECT abs(-9223372036854775807 - 1)";

using CursorOperation = std::function<std::string(const SqlTable&)>;

/// Runs the operation on a cursor on which the query, if there is one, was opened and stepped `steps` times. `function`
/// of SQLite then returns null once.
Run OnACursor(const std::string& sql, int steps, const CursorOperation& operation, const std::string& function = "")
{
    return [=] {
        SituationConnection connection;
        const PlainWalk raw = LegacyWalk(connection.raw.Handle(), Overflow);
        const SqlTable table(connection.database);
        table.Open(sql);
        for (int step = 0; step < steps; ++step) {
            table.ReadNext();
        }
        SqliteCallRecorder sqlite;
        if (!function.empty()) {
            sqlite.ReplaceNextResult(function, 0, false);
        }
        return Observe(table, steps == 0 ? raw.step : raw.finalize, [&] { return operation(table); });
    };
}

Run OnAClosedCursor(const CursorOperation& operation)
{
    return OnACursor("nonsense", 0, operation);
}

/// Another object drops the connection while the cursor still holds its query.
Run OnAConnectionThatIsGone(const std::string& sql, const CursorOperation& operation)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        const AbandonedConnection gone(connection.database);
        return Observe(table, std::nullopt, [&] { return operation(table); });
    };
}

Run OpeningACursor(const std::string& sql, bool open)
{
    return [=] {
        SituationConnection connection(open);
        const SqlTable table(connection.database);
        return Observe(table, FailureOfPrepare(open ? connection.raw.Handle() : nullptr, sql),
                       [&] { return table.Open(sql); });
    };
}

std::string ValueByName(const SqlTable& table)
{
    return table["absent"].ValueInstance() == nullptr ? "a value without instance" : "a value";
}

} // namespace

Situations CursorSituations()
{
    const CursorOperation open = [](const SqlTable& table) { return ReturnedText(table.Open("SELECT 2")); };
    const CursorOperation next = [](const SqlTable& table) { return ReturnedText(table.ReadNext()); };
    const CursorOperation columns = [](const SqlTable& table) { return ReturnedText(table.Columns()); };
    const CursorOperation reset = [](const SqlTable& table) { return ReturnedText(table.Reset()); };
    const CursorOperation close = [](const SqlTable& table) { return ReturnedText(table.Close()); };
    const CursorOperation text = [](const SqlTable& table) { return table.GetText(0); };
    return {
        {"SqlTable::Open", "SQLite rejects the text", OpeningACursor("nonsense", true)},
        {"SqlTable::Open", "the connection is closed", OpeningACursor("SELECT 1", false)},
        {"SqlTable::Open", "a query is held on a closed connection after a success",
         OnAConnectionThatIsGone("SELECT 1", open)},
        {"SqlTable::Open", "a query is held on a closed connection after a failure",
         OnAConnectionThatIsGone(Overflow, open)},
        {"SqlTable::ReadNext", "the cursor is closed", OnAClosedCursor(next)},
        {"SqlTable::ReadNext", "the rows are at their end", OnACursor("SELECT 1", 1, next)},
        {"SqlTable::ReadNext", "the step fails", OnACursor(Overflow, 0, next)},
        {"SqlTable::Columns", "the cursor is closed", OnAClosedCursor(columns)},
        {"SqlTable::Reset", "the cursor is closed", OnAClosedCursor(reset)},
        {"SqlTable::Close", "the cursor is closed", OnAClosedCursor(close)},
        {"SqlTable::Reset", "the last step failed", OnACursor(Overflow, 1, reset)},
        {"SqlTable::Close", "the last step failed", OnACursor(Overflow, 1, close)},
        {"SqlTable::Close", "a query is held on a closed connection after a success",
         OnAConnectionThatIsGone("SELECT 1", close)},
        {"SqlTable::Close", "a query is held on a closed connection after a failure",
         OnAConnectionThatIsGone(Overflow, close)},
        {"SqlTable::GetText", "the column holds NULL", OnACursor("SELECT NULL", 1, text)},
        {"SqlTable::GetText", "SQLite has no memory for the value",
         OnACursor("SELECT 'text'", 1, text, "sqlite3_column_text")},
        {"SqlTable::operator[]", "no column has the name", OnACursor("SELECT 1 AS a", 1, ValueByName)},
    };
}

} // namespace Morvik::sql::tests
