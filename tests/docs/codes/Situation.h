#pragma once

#include <functional>
#include <map>
#include <new>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

/// A code and its message, by value.
struct Record {
    int code = 0;
    std::string message;

    friend bool operator==(const Record&, const Record&) = default;

    friend void PrintTo(const Record& record, std::ostream* stream)
    {
        *stream << record.code << " \"" << record.message << '"';
    }
};

/// The result of a situation.
struct Outcome {
    std::string returned;
    Record before;
    Record after;

    /// SQLite's result in the same situation, for rows with "SQLite's".
    std::optional<RawFailure> plain{};

    /// The values that the document's message contains.
    std::map<std::string, std::string> names{};
};

/// A situation of the document: how to create it, and its result.
struct Situation {
    std::string operation;
    std::string name;
    std::function<Outcome()> run;
};

using Situations = std::vector<Situation>;

Situations OpeningSituations();
Situations TableSituations();
Situations CountingSituations();
Situations WritingSituations();
Situations UpdatingSituations();
Situations ReadingSituations();
Situations WalkingSituations();
Situations ConnectionSituations();
Situations CommandSituations();
Situations BindingSituations();
Situations CursorSituations();
Situations ValueSituations();

template <typename Recorded>
Record RecordOf(const Recorded& recorded)
{
    return {recorded.GetLastError(), recorded.GetLastErrorMsg()};
}

inline std::string ReturnedText(bool value)
{
    return value ? "true" : "false";
}

inline std::string ReturnedText(int value)
{
    return std::to_string(value);
}

inline std::string ReturnedText(std::string text)
{
    return text;
}

/// Runs one operation on an object, or on another object whose failures are copied to that object's record.
template <typename Recorded, typename Act>
Outcome Observe(const Recorded& recorded, Act act, std::optional<RawFailure> plain = std::nullopt)
{
    Outcome outcome{"", RecordOf(recorded), {}, std::move(plain)};
    try {
        outcome.returned = ReturnedText(act());
    } catch (const std::bad_alloc&) {
        outcome.returned = "throws std::bad_alloc";
    } catch (const std::logic_error&) {
        outcome.returned = "throws std::logic_error";
    }
    outcome.after = RecordOf(recorded);
    return outcome;
}

} // namespace Morvik::sql::tests
