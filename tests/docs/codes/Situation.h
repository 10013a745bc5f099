#pragma once

#include <sql/DatabaseApi.h>
#include <sql/SqlDatabase.h>

#include <functional>
#include <map>
#include <new>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// An error by value.
struct CodeAndMessage {
    int code = 0;
    std::string message;

    friend bool operator==(const CodeAndMessage&, const CodeAndMessage&) = default;

    friend void PrintTo(const CodeAndMessage& error, std::ostream* stream)
    {
        *stream << error.code << " \"" << error.message << '"';
    }
};

template <typename Object>
CodeAndMessage ErrorOf(const Object& object)
{
    return {object.GetLastError(), object.GetLastErrorMsg()};
}

/// The result of a situation.
struct SituationResult {
    std::string returned;
    CodeAndMessage before;
    CodeAndMessage after;

    /// SQLite's result in the same situation, for rows with "SQLite's".
    std::optional<RawFailure> raw;

    /// The values that the document's message contains.
    std::map<std::string, std::string> names{};
};

using Run = std::function<SituationResult()>;

/// A situation of the document: how to create it, and its result.
struct Situation {
    std::string operation;
    std::string name;
    Run run;
};

using Situations = std::vector<Situation>;

Situations OpeningSituations();
Situations TableSituations();
Situations WritingSituations();
Situations ReadingSituations();
Situations WalkingSituations();
Situations CommandSituations();
Situations CursorSituations();
Situations ValueSituations();

/// A returned value in the words of the document.
template <typename Value>
std::string ReturnedText(const Value& value)
{
    if constexpr (std::is_same_v<Value, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_arithmetic_v<Value>) {
        return std::to_string(value);
    } else {
        return value;
    }
}

/// Runs one operation on an object, or on another object whose failures are copied to that object.
template <typename Object, typename Act>
SituationResult Observe(const Object& object, std::optional<RawFailure> raw, Act act)
{
    SituationResult outcome{"", ErrorOf(object), {}, std::move(raw)};
    try {
        outcome.returned = ReturnedText(act());
    } catch (const std::bad_alloc&) {
        outcome.returned = "throws std::bad_alloc";
    } catch (const std::logic_error&) {
        outcome.returned = "throws std::logic_error";
    }
    outcome.after = ErrorOf(object);
    return outcome;
}

inline bool OpenAt(const std::string& path, bool readOnly, DatabaseApi& database)
{
    return database.OpenDatabase(path, readOnly);
}

inline bool OpenAt(const std::string& path, bool readOnly, SqlDatabase& database)
{
    return database.Open(path, readOnly);
}

/// A database on a separate file, and a raw SQLite connection to it that gives SQLite's result. The file holds the
/// table t, whose column a is 1, 2 and 3, and the view failing, which fails at its second row.
template <typename Database>
struct SituationFile {
    explicit SituationFile(bool open = true)
    {
        raw.Execute("CREATE TABLE t (a UNIQUE); INSERT INTO t VALUES (1), (2), (3);"
                    "CREATE VIEW failing AS SELECT abs(-9223372036854775807 + 1 - a) AS a FROM t");
        if (open && !OpenAt(path, false, database)) {
            throw std::runtime_error(database.GetLastErrorMsg());
        }
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    RawSqlite raw{path};
    Database database;
};

using SituationConnection = SituationFile<SqlDatabase>;

/// A facade on such a file. The facade has the error 112 "Missing command." of an earlier failure.
struct SituationFacade : SituationFile<DatabaseApi> {
    explicit SituationFacade(bool open = true) : SituationFile(open) { FailBefore(); }

    void FailBefore() { database.Execute(""); }

    void ReopenReadOnly()
    {
        database.CloseDatabase();
        database.OpenDatabase(path, true);
        raw.Execute("PRAGMA query_only = ON");
    }
};

} // namespace Morvik::sql::tests
