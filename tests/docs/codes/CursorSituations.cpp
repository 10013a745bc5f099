#include <sql/SqlTable.h>
#include <sql/SqlValue.h>

#include <functional>
#include <string>
#include <vector>

#include "docs/codes/Situation.h"
#include "support/AbandonedConnection.h"

namespace Morvik::sql::tests {

namespace {

const std::string Overflow = "SELECT abs(-9223372036854775807 - 1)";

/// Runs the operation on a cursor on which the query, if there is one, was opened and stepped `steps` times.
template <typename Operation>
Run OnACursor(const std::string& sql, int steps, Operation operation)
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
Run OnAClosedCursor(Operation operation)
{
    return OnACursor("nonsense", 0, operation);
}

/// Runs the operation on a cursor that holds a query while its connection counts as closed.
template <typename Operation>
Run OnAConnectionThatIsGone(const std::string& sql, Operation operation)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        const AbandonedConnection gone(connection.database);
        return Observe(table, {}, [&] { return std::invoke(operation, table); });
    };
}

Run OpeningACursor(const std::string& sql, bool open)
{
    return [=] {
        SituationConnection connection;
        if (!open) {
            connection.database.Close();
        }
        const SqlTable table(connection.database);
        return Observe(table, FailureOfPrepare(open ? connection.raw.Handle() : nullptr, sql),
                       [&] { return table.Open(sql); });
    };
}

/// Reads a value that already has an error.
template <typename Operation>
SituationResult ReadOf(SqlValue value, Operation read)
{
    value.SetError(77);
    value.SetErrorMsg("earlier");
    return Observe(value, {}, [&] { return std::invoke(read, value); });
}

template <typename Operation>
Run OfNothing(Operation read)
{
    return [=] { return ReadOf(SqlValue(nullptr), read); };
}

template <typename Operation>
Run OfAColumn(const std::string& sql, Operation read)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        return ReadOf(table.GetValue(0), read);
    };
}

} // namespace

Situations CursorSituations()
{
    const auto open = Call<&SqlTable::Open>("SELECT 2");
    const auto text = Call<&SqlTable::GetText>(0);
    const auto byName = [](const SqlTable& table) {
        return std::string(table["absent"].ValueInstance() == nullptr ? "a value without instance" : "a value");
    };
    const std::string getText = "SqlValue::GetValue<std::string>";
    const std::string getBytes = "SqlValue::GetValue<std::vector<char>>";
    const auto readText = &SqlValue::GetValue<std::string>;
    const auto readBytes = &SqlValue::GetValue<std::vector<char>>;
    const std::string noMemory = "SQLite has no memory for the value";
    return {
        {"SqlTable::Open", "SQLite rejects the text", OpeningACursor("nonsense", true)},
        {"SqlTable::Open", "the connection is closed", OpeningACursor("SELECT 1", false)},
        {"SqlTable::Open", "a query is held on a closed connection after a success",
         OnAConnectionThatIsGone("SELECT 1", open)},
        {"SqlTable::Open", "a query is held on a closed connection after a failure",
         OnAConnectionThatIsGone(Overflow, open)},
        {"SqlTable::ReadNext", "the cursor is closed", OnAClosedCursor(&SqlTable::ReadNext)},
        {"SqlTable::ReadNext", "the rows are at their end", OnACursor("SELECT 1", 1, &SqlTable::ReadNext)},
        {"SqlTable::ReadNext", "the step fails", OnACursor(Overflow, 0, &SqlTable::ReadNext)},
        {"SqlTable::Columns", "the cursor is closed", OnAClosedCursor(&SqlTable::Columns)},
        {"SqlTable::Reset", "the cursor is closed", OnAClosedCursor(&SqlTable::Reset)},
        {"SqlTable::Close", "the cursor is closed", OnAClosedCursor(&SqlTable::Close)},
        {"SqlTable::Reset", "the last step failed", OnACursor(Overflow, 1, &SqlTable::Reset)},
        {"SqlTable::Close", "the last step failed", OnACursor(Overflow, 1, &SqlTable::Close)},
        {"SqlTable::Close", "a query is held on a closed connection after a success",
         OnAConnectionThatIsGone("SELECT 1", &SqlTable::Close)},
        {"SqlTable::Close", "a query is held on a closed connection after a failure",
         OnAConnectionThatIsGone(Overflow, &SqlTable::Close)},
        {"SqlTable::GetText", "the column holds NULL", OnACursor("SELECT NULL", 1, text)},
        {"SqlTable::GetText", noMemory, OnACursor("SELECT 'text'", 1, WithNull("sqlite3_column_text", text))},
        {"SqlTable::operator[]", "no column has the name", OnACursor("SELECT 1 AS a", 1, byName)},
        {"SqlValue::GetValueType", "nothing is wrapped", OfNothing(&SqlValue::GetValueType)},
        {"SqlValue::GetValue<int>", "nothing is wrapped", OfNothing(&SqlValue::GetValue<int>)},
        {"SqlValue::GetValue<long long>", "nothing is wrapped", OfNothing(&SqlValue::GetValue<long long>)},
        {"SqlValue::GetValue<double>", "nothing is wrapped", OfNothing(&SqlValue::GetValue<double>)},
        {getText, "nothing is wrapped", OfNothing(readText)},
        {getBytes, "nothing is wrapped", OfNothing(readBytes)},
        {getText, "the value is NULL", OfAColumn("SELECT NULL", readText)},
        {getText, noMemory, OfAColumn("SELECT 'text'", WithNull("sqlite3_value_text", readText))},
        {getBytes, noMemory, OfAColumn("SELECT X'01'", WithNull("sqlite3_value_blob", readBytes))},
        {getBytes, "SQLite has no memory to convert the value",
         OfAColumn("SELECT 1", WithNull("sqlite3_value_bytes", readBytes))},
    };
}

} // namespace Morvik::sql::tests
