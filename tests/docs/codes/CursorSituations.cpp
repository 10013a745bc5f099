#include <sql/SqlTable.h>
#include <sql/SqlValue.h>

#include <sqlite3.h>

#include <string>
#include <type_traits>
#include <vector>

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
        const RawWalk raw = LegacyWalk(connection.raw.Handle(), Overflow);
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

/// Runs the operation on a cursor that holds a query while its connection counts as closed.
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

/// A number, or whether a text or blob is empty, in the words of the document.
template <typename Value>
std::string TextOf(const Value& value)
{
    if constexpr (std::is_arithmetic_v<Value>) {
        return value == 0 ? "0" : "not 0";
    } else {
        return value.empty() ? "empty" : "not empty";
    }
}

template <typename Value>
SituationResult OfNothing()
{
    SqlValue value(nullptr);
    return Observe(value, std::nullopt, [&] { return TextOf(value.GetValue<Value>()); });
}

SituationResult TypeOfNothing()
{
    SqlValue value(nullptr);
    value.GetValue<int>();
    return Observe(value, std::nullopt, [&] { return value.GetValueType(); });
}

/// Reads a column of a row as a value that already has an error. `function` of SQLite then returns null once.
template <typename Value>
Run OfAColumn(const std::string& sql, const std::string& function = "")
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        SqlValue value = table.GetValue(0);
        value.SetError(112);
        value.SetErrorMsg("earlier");
        SqliteCallRecorder sqlite;
        if (!function.empty()) {
            sqlite.ReplaceNextResult(function, 0, false);
        }
        return Observe(value, std::nullopt, [&] { return TextOf(value.GetValue<Value>()); });
    };
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

Situations ValueSituations()
{
    using Bytes = std::vector<char>;
    const std::string text = "SqlValue::GetValue<std::string>";
    const std::string bytes = "SqlValue::GetValue<std::vector<char>>";
    const std::string noMemory = "SQLite has no memory for the value";
    return {
        {"SqlValue::GetValueType", "nothing is wrapped", TypeOfNothing},
        {"SqlValue::GetValue<int>", "nothing is wrapped", OfNothing<int>},
        {"SqlValue::GetValue<long long>", "nothing is wrapped", OfNothing<long long>},
        {"SqlValue::GetValue<double>", "nothing is wrapped", OfNothing<double>},
        {text, "nothing is wrapped", OfNothing<std::string>},
        {bytes, "nothing is wrapped", OfNothing<Bytes>},
        {text, "the value is NULL", OfAColumn<std::string>("SELECT NULL")},
        {text, noMemory, OfAColumn<std::string>("SELECT 'text'", "sqlite3_value_text")},
        {bytes, noMemory, OfAColumn<Bytes>("SELECT X'01'", "sqlite3_value_blob")},
        {bytes, "SQLite has no memory to convert the value", OfAColumn<Bytes>("SELECT 1", "sqlite3_value_bytes")},
    };
}

} // namespace Morvik::sql::tests
