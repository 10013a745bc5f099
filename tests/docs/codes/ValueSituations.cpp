#include <sql/SqlTable.h>
#include <sql/SqlValue.h>

#include <string>
#include <vector>

#include "docs/codes/SituationConnection.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

/// The zero of every type, in the words of the document.
std::string TextOf(double number)
{
    return number == 0.0 ? "0" : "not 0";
}

template <typename Sequence>
std::string TextOf(const Sequence& sequence)
{
    return sequence.empty() ? "empty" : "not empty";
}

std::string TextOf(int number)
{
    return std::to_string(number);
}

std::string TextOf(long long number)
{
    return std::to_string(number);
}

template <typename T>
Outcome OfNothing()
{
    SqlValue value(nullptr);
    return Observe(value, [&] { return TextOf(value.GetValue<T>()); });
}

Outcome TypeOfNothing()
{
    SqlValue value(nullptr);
    value.GetValue<int>();
    return Observe(value, [&] { return value.GetValueType(); });
}

/// Reads a column of a row as a value whose record already holds a failure.
template <typename T>
Outcome OfAColumn(const std::string& sql, const std::string& replaced = "")
{
    SituationConnection connection;
    const SqlTable table(connection.database);
    table.Open(sql);
    table.ReadNext();
    SqlValue value = table.GetValue(0);
    value.SetError(112);
    value.SetErrorMsg("earlier");
    SqliteCallRecorder sqlite;
    if (!replaced.empty()) {
        sqlite.ReplaceNextResult(replaced, 0, false);
    }
    return Observe(value, [&] { return TextOf(value.GetValue<T>()); });
}

} // namespace

Situations ValueSituations()
{
    using Bytes = std::vector<char>;
    const std::string get = "SqlValue::GetValue";
    const std::string missing = "nothing is wrapped";
    const std::string noMemory = "SQLite has no memory for the value";
    return {
        {"SqlValue::GetValueType", missing, TypeOfNothing},
        {get + "<int>", missing, OfNothing<int>},
        {get + "<long long>", missing, OfNothing<long long>},
        {get + "<double>", missing, OfNothing<double>},
        {get + "<std::string>", missing, OfNothing<std::string>},
        {get + "<std::vector<char>>", missing, OfNothing<Bytes>},
        {get + "<std::string>", "the value is NULL", [] { return OfAColumn<std::string>("SELECT NULL"); }},
        {get + "<std::string>", noMemory, [] { return OfAColumn<std::string>("SELECT 'text'", "sqlite3_value_text"); }},
        {get + "<std::vector<char>>", noMemory, [] { return OfAColumn<Bytes>("SELECT X'01'", "sqlite3_value_blob"); }},
        {get + "<std::vector<char>>", "SQLite has no memory to convert the value",
         [] { return OfAColumn<Bytes>("SELECT 1", "sqlite3_value_bytes"); }},
    };
}

} // namespace Morvik::sql::tests
