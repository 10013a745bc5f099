#include <sql/SqlTable.h>
#include <sql/SqlValue.h>

#include <string>
#include <vector>

#include "docs/codes/Situation.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

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
Outcome OfNothing()
{
    SqlValue value(nullptr);
    return Observe(value, std::nullopt, [&] { return TextOf(value.GetValue<Value>()); });
}

Outcome TypeOfNothing()
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
