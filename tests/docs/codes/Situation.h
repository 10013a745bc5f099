#pragma once

#include <sql/DatabaseApi.h>
#include <sql/SqlDatabase.h>

#include <fstream>
#include <functional>
#include <map>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// A copy of the error of an object.
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
    RawFailure raw{};

    /// The values that the document's message contains. An invalid cell is the second of its row, and has the column 4.
    std::map<std::string, std::string> names{{"position", "1"}, {"column", "4"}};
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
Situations CommandSituations();
Situations CursorSituations();

/// A returned value in the words of the document.
template <typename Value>
std::string ReturnedText(const Value& value)
{
    if constexpr (std::is_same_v<Value, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_arithmetic_v<Value>) {
        return value == 0 ? "0" : std::to_string(value);
    } else {
        return value.empty() ? "empty" : std::string(value.begin(), value.end());
    }
}

/// Runs one operation and notes the error of the object before and after. `raw` is SQLite's result.
template <typename Object, typename Act>
SituationResult Observe(const Object& object, RawFailure raw, Act act)
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

/// A database on a separate file, and a raw SQLite connection to it that gives SQLite's result. The file holds the
/// table t, whose column a is 1, 2 and 3, and the view failing, which fails at its second row.
template <typename Database, auto Open>
struct SituationFile {
    SituationFile()
    {
        raw.Execute("CREATE TABLE t (a UNIQUE); INSERT INTO t VALUES (1), (2), (3);"
                    "CREATE VIEW failing AS SELECT abs(-9223372036854775807 + 1 - a) AS a FROM t");
        if (!std::invoke(Open, database, path, false)) {
            throw std::runtime_error(database.GetLastErrorMsg());
        }
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    RawSqlite raw{path};
    Database database;
};

using SituationConnection = SituationFile<SqlDatabase, &SqlDatabase::Open>;

/// A facade on a SituationFile. The facade has the error 112 "Missing command." of an earlier failure.
struct SituationFacade : SituationFile<DatabaseApi, &DatabaseApi::OpenDatabase> {
    SituationFacade() { FailBefore(); }

    void FailBefore() { database.Execute(""); }

    void Reopen(const std::string& file, bool readOnly)
    {
        database.CloseDatabase();
        database.OpenDatabase(file, readOnly);
    }
};

/// Creates a situation on a facade, and returns SQLite's result in it.
using Arrange = std::function<RawFailure(SituationFacade&)>;

inline RawFailure Nothing(SituationFacade& /*facade*/)
{
    return {};
}

inline RawFailure Closed(SituationFacade& facade)
{
    facade.database.CloseDatabase();
    facade.FailBefore();
    return FailureOfPrepare(nullptr, "SELECT 1");
}

/// Opens a file that is not a database.
inline RawFailure OnALetter(SituationFacade& facade)
{
    const std::string path = facade.directory.File("letter.txt");
    std::ofstream(path) << std::string(200, 'x');
    facade.Reopen(path, false);
    return FailureOfExec(RawSqlite(path).Handle(), "SELECT * FROM t");
}

inline RawFailure ReadOnly(SituationFacade& facade)
{
    facade.Reopen(facade.path, true);
    facade.raw.Execute("PRAGMA query_only = ON");
    return {};
}

/// Calls `arrange`. If it returns no failure, SQLite's result is that of `call` with the text.
inline Arrange Raw(RawFailure (*call)(sqlite3*, const std::string&), const std::string& sql,
                   const Arrange& arrange = Nothing)
{
    return [=](SituationFacade& facade) {
        const RawFailure raw = arrange(facade);
        return raw.code != 0 ? raw : call(facade.raw.Handle(), sql);
    };
}

inline RawFailure FailureOfStep(sqlite3* handle, const std::string& sql)
{
    return LegacyWalk(handle, sql).step;
}

inline RawFailure FailureOfFinalize(sqlite3* handle, const std::string& sql)
{
    return LegacyWalk(handle, sql).finalize;
}

/// Calls a member function: Call<&SqlTable::Open>("SELECT 1")(table) is table.Open("SELECT 1").
template <auto Function>
inline constexpr auto Call =
    [](auto... arguments) { return [=](auto& object) { return std::invoke(Function, object, arguments...); }; };

/// Calls a member function with the text and a DbTableData to fill.
template <auto Function>
inline constexpr auto ReadCall = [](const std::string& text) {
    return [=](DatabaseApi& database) {
        DbTableData data;
        return std::invoke(Function, database, text, data);
    };
};

inline constexpr auto CreateTable = Call<&DatabaseApi::CreateTable>;
inline constexpr auto DropTable = Call<&DatabaseApi::DropTable>;
inline constexpr auto AlterTable = Call<&DatabaseApi::AlterTable>;
inline constexpr auto Execute = Call<&DatabaseApi::Execute>;
inline constexpr auto Write = Call<&DatabaseApi::WriteTableValues>;
inline constexpr auto Update = Call<&DatabaseApi::UpdateTableValues>;
inline constexpr auto ReadTable = ReadCall<&DatabaseApi::ReadTableValues>;
inline constexpr auto Read = ReadCall<&DatabaseApi::ReadValues>;
inline constexpr auto Begin = Call<&DatabaseApi::SqlQueryBegin>;

/// Runs the operation on the facade of the situation.
template <typename Operation>
Run OnAFacade(const Arrange& arrange, Operation operation)
{
    return [=]() {
        SituationFacade facade;
        const RawFailure raw = arrange(facade);
        return Observe(facade.database, raw, [&] { return std::invoke(operation, facade.database); });
    };
}

/// Runs the operation. The first call of the SQLite function with this name returns null, or 0.
template <typename Operation>
auto WithNull(const std::string& function, Operation operation)
{
    return [=](auto&... objects) {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult(function, 0, false);
        return std::invoke(operation, objects...);
    };
}

} // namespace Morvik::sql::tests
