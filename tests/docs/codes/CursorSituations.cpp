#include <sql/SqlTable.h>
#include <sql/SqlValue.h>

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "docs/codes/Situation.h"
#include "support/AbandonedConnection.h"

namespace Morvik::sql::tests {

namespace {

using Bytes = std::vector<char>;

const std::string Overflow = "SELECT abs(-9223372036854775807 - 1)";

/// Runs the operation on a cursor on which the query, if there is one, was opened and stepped `steps` times.
template <typename Operation>
Run OnACursor(const std::string& sql, int steps, const Operation& operation)
{
    return [=] {
        SituationConnection connection;
        const RawWalk raw = LegacyWalk(connection.raw.Handle(), Overflow);
        const SqlTable table(connection.database);
        table.Open(sql);
        for (int step = 0; step < steps; ++step) {
            table.ReadNext();
        }
        return Observe(table, steps == 0 ? raw.step : raw.finalize, [&] { return std::invoke(operation, table); });
    };
}

template <typename Operation>
Run OnAClosedCursor(const Operation& operation)
{
    return OnACursor("nonsense", 0, operation);
}

/// Runs the operation on a cursor that holds a query while its connection counts as closed.
template <typename Operation>
Run OnAConnectionThatIsGone(const std::string& sql, const Operation& operation)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        const AbandonedConnection gone(connection.database);
        return Observe(table, std::nullopt, [&] { return std::invoke(operation, table); });
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

/// A number, or whether a text or blob is empty, in the words of the document.
template <typename Value>
std::string ReadValue(SqlValue& value)
{
    const Value read = value.GetValue<Value>();
    if constexpr (std::is_arithmetic_v<Value>) {
        return read == 0 ? "0" : "not 0";
    } else {
        return read.empty() ? "empty" : "not empty";
    }
}

template <typename Value>
SituationResult OfNothing()
{
    SqlValue value(nullptr);
    return Observe(value, std::nullopt, [&] { return ReadValue<Value>(value); });
}

SituationResult TypeOfNothing()
{
    SqlValue value(nullptr);
    ReadValue<int>(value);
    return Observe(value, std::nullopt, [&] { return value.GetValueType(); });
}

/// Reads a column of a row as a value that already has an error.
template <typename Operation>
Run OfAColumn(const std::string& sql, const Operation& read)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        SqlValue value = table.GetValue(0);
        value.SetError(112);
        value.SetErrorMsg("earlier");
        return Observe(value, std::nullopt, [&] { return read(value); });
    };
}

} // namespace

Situations CursorSituations()
{
    const auto open = [](const SqlTable& table) { return table.Open("SELECT 2"); };
    const auto next = [](const SqlTable& table) { return table.ReadNext(); };
    const auto columns = [](const SqlTable& table) { return table.Columns(); };
    const auto reset = [](const SqlTable& table) { return table.Reset(); };
    const auto close = [](const SqlTable& table) { return table.Close(); };
    const auto text = [](const SqlTable& table) { return table.GetText(0); };
    const auto byName = [](const SqlTable& table) {
        return std::string(table["absent"].ValueInstance() == nullptr ? "a value without instance" : "a value");
    };
    const std::string getText = "SqlValue::GetValue<std::string>";
    const std::string getBytes = "SqlValue::GetValue<std::vector<char>>";
    const std::string noMemory = "SQLite has no memory for the value";
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
        {"SqlTable::GetText", noMemory, OnACursor("SELECT 'text'", 1, WithNull("sqlite3_column_text", text))},
        {"SqlTable::operator[]", "no column has the name", OnACursor("SELECT 1 AS a", 1, byName)},
        {"SqlValue::GetValueType", "nothing is wrapped", TypeOfNothing},
        {"SqlValue::GetValue<int>", "nothing is wrapped", OfNothing<int>},
        {"SqlValue::GetValue<long long>", "nothing is wrapped", OfNothing<long long>},
        {"SqlValue::GetValue<double>", "nothing is wrapped", OfNothing<double>},
        {getText, "nothing is wrapped", OfNothing<std::string>},
        {getBytes, "nothing is wrapped", OfNothing<Bytes>},
        {getText, "the value is NULL", OfAColumn("SELECT NULL", ReadValue<std::string>)},
        {getText, noMemory, OfAColumn("SELECT 'text'", WithNull("sqlite3_value_text", ReadValue<std::string>))},
        {getBytes, noMemory, OfAColumn("SELECT X'01'", WithNull("sqlite3_value_blob", ReadValue<Bytes>))},
        {getBytes, "SQLite has no memory to convert the value",
         OfAColumn("SELECT 1", WithNull("sqlite3_value_bytes", ReadValue<Bytes>))},
    };
}

} // namespace Morvik::sql::tests
