#include <sql/SqlTable.h>

#include <sqlite3.h>

#include <string>

#include "docs/codes/SituationConnection.h"
#include "support/AbandonedConnection.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string Failing = "SELECT abs(-9223372036854775807 - 1)";

template <typename Operation>
std::function<Outcome()> OnAClosedCursor(Operation operation)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open("nonsense");
        return Observe(table, [&] { return operation(table); });
    };
}

/// Another object drops the connection while the cursor still holds its query.
template <typename Operation>
std::function<Outcome()> OnAConnectionThatIsGone(const std::string& sql, Operation operation)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        const AbandonedConnection gone(connection.database);
        return Observe(table, [&] { return operation(table); });
    };
}

Outcome OpenedWithBadText()
{
    SituationConnection connection;
    const SqlTable table(connection.database);
    return Observe(
        table, [&] { return table.Open("nonsense"); }, FailureOfPrepare(connection.plain.Handle(), "nonsense"));
}

Outcome OpenedOnAClosedConnection()
{
    SituationConnection connection(false);
    const SqlTable table(connection.database);
    return Observe(
        table, [&] { return table.Open("SELECT 1"); }, FailureOfPrepare(nullptr, "SELECT 1"));
}

Outcome FailedStep()
{
    SituationConnection connection;
    const SqlTable table(connection.database);
    table.Open(Failing);
    return Observe(
        table, [&] { return table.ReadNext(); }, LegacyWalk(connection.plain.Handle(), Failing).step);
}

template <typename Operation>
std::function<Outcome()> AfterAFailedStep(Operation operation)
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(Failing);
        table.ReadNext();
        return Observe(
            table, [&] { return operation(table); }, LegacyWalk(connection.plain.Handle(), Failing).finalize);
    };
}

/// Reads the first row of a query.
template <typename Operation>
std::function<Outcome()> OnARow(const std::string& sql, Operation operation, const std::string& replaced = "")
{
    return [=] {
        SituationConnection connection;
        const SqlTable table(connection.database);
        table.Open(sql);
        table.ReadNext();
        SqliteCallRecorder sqlite;
        if (!replaced.empty()) {
            sqlite.ReplaceNextResult(replaced, 0, false);
        }
        return Observe(table, [&] { return operation(table); });
    };
}

constexpr auto Open = [](const SqlTable& table) { return table.Open("SELECT 2"); };
constexpr auto ReadNext = [](const SqlTable& table) { return table.ReadNext(); };
constexpr auto Columns = [](const SqlTable& table) { return table.Columns(); };
constexpr auto Reset = [](const SqlTable& table) { return table.Reset(); };
constexpr auto Close = [](const SqlTable& table) { return table.Close(); };
constexpr auto GetText = [](const SqlTable& table) { return table.GetText(0); };
constexpr auto ByName = [](const SqlTable& table) {
    return std::string(table["absent"].ValueInstance() == nullptr ? "a value without instance" : "a value");
};

} // namespace

Situations CursorSituations()
{
    return {
        {"SqlTable::Open", "SQLite rejects the text", OpenedWithBadText},
        {"SqlTable::Open", "the connection is closed", OpenedOnAClosedConnection},
        {"SqlTable::Open", "a query is held on a closed connection after a success",
         OnAConnectionThatIsGone("SELECT 1", Open)},
        {"SqlTable::Open", "a query is held on a closed connection after a failure",
         OnAConnectionThatIsGone(Failing, Open)},
        {"SqlTable::ReadNext", "the cursor is closed", OnAClosedCursor(ReadNext)},
        {"SqlTable::ReadNext", "the rows are at their end", OnARow("SELECT 1", ReadNext)},
        {"SqlTable::ReadNext", "the step fails", FailedStep},
        {"SqlTable::Columns", "the cursor is closed", OnAClosedCursor(Columns)},
        {"SqlTable::Reset", "the cursor is closed", OnAClosedCursor(Reset)},
        {"SqlTable::Close", "the cursor is closed", OnAClosedCursor(Close)},
        {"SqlTable::Reset", "the last step failed", AfterAFailedStep(Reset)},
        {"SqlTable::Close", "the last step failed", AfterAFailedStep(Close)},
        {"SqlTable::Close", "a query is held on a closed connection after a success",
         OnAConnectionThatIsGone("SELECT 1", Close)},
        {"SqlTable::Close", "a query is held on a closed connection after a failure",
         OnAConnectionThatIsGone(Failing, Close)},
        {"SqlTable::GetText", "the column holds NULL", OnARow("SELECT NULL", GetText)},
        {"SqlTable::GetText", "SQLite has no memory for the value",
         OnARow("SELECT 'text'", GetText, "sqlite3_column_text")},
        {"SqlTable::operator[]", "no column has the name", OnARow("SELECT 1 AS a", ByName)},
    };
}

} // namespace Morvik::sql::tests
