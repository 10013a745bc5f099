#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "docs/codes/DocumentTable.h"
#include "docs/codes/Situation.h"
#include "support/DoubleQuotedTexts.h"
#include "support/NumberLocales.h"

namespace Morvik::sql::tests {

namespace {

using testing::Each;
using testing::IsEmpty;
using testing::Not;

// Checks that docs/guide/messages.md and the library agree: the cause in each row is created here, and the code and
// message are compared with the row.

struct MessagesRow {
    int code = 0;
    std::string message;
    std::string cause;

    friend void PrintTo(const MessagesRow& row, std::ostream* stream) { *stream << row.code << ": " << row.cause; }
};

std::vector<MessagesRow> MessagesRows()
{
    std::vector<MessagesRow> rows;
    for (const std::vector<std::string>& cells : TableRows(TKOSQLLITE_MESSAGES_DOCUMENT)) {
        const std::string message = WithoutBackticks(cells.at(2));
        rows.push_back({std::stoi(cells.at(1)), message == "(none)" ? "" : message, WithoutBackticks(cells.at(3))});
    }
    return rows;
}

const DbTableColumnValue IntInReal{.type = DbTableColumnType::Real, .value = 3};
const DbTableDataWrite NoRows{.columns = {"b"}, .rows = {}};

DbTableDataWrite OneCell(const DbTableColumnValue& cell)
{
    return {.columns = {"b"}, .rows = {{.cells = {cell}}}};
}

DbTableDataWrite OneText(const std::string& text)
{
    return OneCell({.type = DbTableColumnType::Text, .value = text});
}

DbTableDataWrite OneReal(double number)
{
    return OneCell({.type = DbTableColumnType::Real, .value = number});
}

/// A facade on a temporary file, and a list of its failures. The table t in the file has one row, whose column a is 1.
struct Failures {
    Failures() { database.Execute("CREATE TABLE t (a INTEGER UNIQUE, b TEXT); INSERT INTO t VALUES (1, 'one')"); }

    /// Adds the error of an operation on the object to the list, or a note that the operation succeeded.
    template <typename Object>
    void AddOf(const Object& object, bool succeeded)
    {
        errors.push_back(succeeded ? CodeAndMessage{-1, "succeeded"} : ErrorOf(object));
    }

    void Add(bool succeeded) { AddOf(database, succeeded); }

    void Reopen(bool readOnly)
    {
        database.CloseDatabase();
        database.OpenDatabase(path, readOnly);
    }

    void BeginWalk(const std::string& sql)
    {
        database.SqlQueryBegin(sql);
        database.ReadNextRow(row);
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseApi database;
    bool open = database.OpenDatabase(path, false);
    DbTableData data;
    DbTableRowValues row;
    int result = 0;
    std::vector<CodeAndMessage> errors;
};

void WriteWithoutDoubleQuotedTexts(Failures& failures)
{
    const DoubleQuotedTexts off(false);
    failures.Reopen(false);
    failures.Add(failures.database.WriteTableValues("t", OneText("TEXT")));

    // Newer versions of SQLite quote the name and add a hint.
    std::string& message = failures.errors.back().message;
    if (message == R"(no such column: "TEXT" - should this be a string literal in single-quotes?)") {
        message = "no such column: TEXT";
    }
}

void WriteFromAnOldState(Failures& failures)
{
    failures.database.ReadValues("PRAGMA journal_mode = WAL", failures.data);
    failures.database.Execute("PRAGMA busy_timeout = 10000");
    RawSqlite other(failures.path);
    failures.BeginWalk("SELECT a FROM t");
    other.Execute("INSERT INTO t VALUES (2, 'two')");
    failures.Add(failures.database.Execute("INSERT INTO t VALUES (3, 'three')"));
}

void Bind(Failures& failures, bool stepped, int index)
{
    SqlCommand command = failures.database.PrepareStatement("SELECT ?");
    if (stepped) {
        command.Step();
    }
    failures.AddOf(command, command.BindInteger(index, 1));
}

using Cause = std::function<void(Failures&)>;

Cause Write(const DbTableDataWrite& rows, const std::string& table = "t")
{
    return [=](Failures& failures) { failures.Add(failures.database.WriteTableValues(table, rows)); };
}

Cause Update(const DbTableDataWrite& rows, const std::string& condition)
{
    return [=](Failures& failures) { failures.Add(failures.database.UpdateTableValues("t", rows, condition)); };
}

Cause Create(const DbTableColumnDefinition& column, const DbTableConstraints& constraints = {})
{
    const DbTableDefinition definition{.name = "n", .columns = {column}, .constraints = constraints};
    return [=](Failures& failures) { failures.Add(failures.database.CreateTable(definition)); };
}

Cause Execute(const std::string& sql)
{
    return [=](Failures& failures) { failures.Add(failures.database.Execute(sql)); };
}

Cause Both(const Cause& first, const Cause& second)
{
    return [=](Failures& failures) {
        first(failures);
        second(failures);
    };
}

const std::map<std::string, Cause> Causes{
    {"WriteTableValues with a Real cell that holds an int", Write(OneCell(IntInReal))},
    {"WriteTableValues with a Null cell, or one that was read from NULL",
     Both(Write(OneCell({.type = DbTableColumnType::Null})),
          Write(OneCell({.type = DbTableColumnType::None, .value = ""})))},
    {"CreateTable with a foreign key", Create({.name = "a"}, {.referenceTable = "t", .foreignKey = {"a"}})},
    {"CreateTable with Check or Default without an argument",
     Both(Create({.name = "b", .constraintFlags = Check}), Create({.name = "b", .constraintFlags = Default}))},
    {"UpdateTableValues with a first cell that is invalid, or without rows",
     Both(Update(OneCell(IntInReal), "WHERE a = 1"), Update(NoRows, "WHERE a = 1"))},
    {"WriteTableValues without rows", Write(NoRows)},
    {"UpdateTableValues without rows or with an invalid first cell, and without a condition",
     Both(Update(OneCell(IntInReal), ""), Update(NoRows, ""))},
    {"UpdateTableValues with the condition a = 1", Update(OneText("kitchen"), "a = 1")},
    {"ExistData with the condition a = 1",
     [](Failures& failures) {
         failures.database.ExistData("t", "a = 1", failures.result);
         failures.Add(failures.result == 0);
     }},
    {"a write to the table my table", Write(OneText("kitchen"), "my table")},
    {"a row with fewer cells than columns", Write({.columns = {"a", "b"}, .rows = OneText("kitchen").rows})},
    {"a Real cell of 2.5 under a locale with a decimal comma",
     [](Failures& failures) {
         const ScopedGlobalLocale comma;
         Write(OneReal(2.5))(failures);
     }},
    {"a text with a zero byte", Write(OneText(std::string("a\0b", 3)))},
    {"a blob cell that holds a double quotation mark",
     Write(OneCell({.type = DbTableColumnType::Blob, .value = std::vector<char>{'a', '"', 'b'}}))},
    {"a text cell TEXT, with a SQLite that has double-quoted texts off", WriteWithoutDoubleQuotedTexts},
    {"a Real cell that holds infinity", Write(OneReal(std::numeric_limits<double>::infinity()))},
    {"a text without apostrophes in a condition or a query", Execute("SELECT a FROM t WHERE b = kitchen")},
    {"a write to a table that is not there", Write(OneText("kitchen"), "room")},
    {"PrepareStatement with a text that SQLite rejects, and a Step after that",
     [](Failures& failures) {
         SqlCommand command = failures.database.PrepareStatement("SELEC 1");
         failures.AddOf(command, command.GetLastError() == 0);
         failures.AddOf(command, command.Step());
     }},
    {"COMMIT after a failure that ended the transaction",
     [](Failures& failures) {
         failures.database.Execute("BEGIN; INSERT OR ROLLBACK INTO t VALUES (1, 'again')");
         Execute("COMMIT")(failures);
     }},
    {"a write while another connection writes",
     [](Failures& failures) {
         RawSqlite other(failures.path);
         other.Execute("BEGIN IMMEDIATE");
         Execute("INSERT INTO t VALUES (2, 'two')")(failures);
     }},
    {"a write during a walk in WAL mode, after another connection wrote", WriteFromAnOldState},
    {"CloseDatabase after a read",
     [](Failures& failures) {
         failures.database.ReadTableValues("t", failures.data);
         failures.Add(failures.database.CloseDatabase());
     }},
    {"DropTable of the table that is walked",
     [](Failures& failures) {
         failures.BeginWalk("SELECT a FROM t UNION ALL SELECT a FROM t");
         failures.Add(failures.database.DropTable("t"));
     }},
    {"a write after opening read-only",
     [](Failures& failures) {
         failures.Reopen(true);
         Execute("INSERT INTO t VALUES (2, 'two')")(failures);
     }},
    {"opening a directory read-only",
     [](Failures& failures) {
         failures.database.CloseDatabase();
         failures.Add(failures.database.OpenDatabase(failures.directory.Path().string(), true));
     }},
    {"opening a file that is not there read-only, or a directory to write",
     [](Failures& failures) {
         failures.database.CloseDatabase();
         failures.Add(failures.database.OpenDatabase(failures.directory.File("absent.db"), true));
         failures.Add(failures.database.OpenDatabase(failures.directory.Path().string(), false));
     }},
    {"a write of a key that is there", Execute("INSERT INTO t VALUES (1, 'again')")},
    {"Execute or a write on a facade that is not open",
     [](Failures& failures) {
         DatabaseApi closed;
         failures.AddOf(closed, closed.Execute("SELECT 1"));
         failures.AddOf(closed, closed.WriteTableValues("t", OneText("kitchen")));
     }},
    {"a bind after Step without Reset", [](Failures& failures) { Bind(failures, true, 1); }},
    {"a bind with index 0", [](Failures& failures) { Bind(failures, false, 0); }},
    {"the first use of a file that is not a database",
     [](Failures& failures) {
         failures.database.CloseDatabase();
         std::ofstream(failures.path) << std::string(1000, 'x');
         failures.Reopen(false);
         failures.Add(failures.database.ReadTableValues("t", failures.data));
         Execute("CREATE TABLE n (a)")(failures);
     }},
    {"a read on a facade that is not open",
     [](Failures& failures) {
         failures.database.CloseDatabase();
         failures.Add(failures.database.ReadTableValues("t", failures.data));
         failures.Add(failures.database.SqlQueryBegin("SELECT 1"));
     }},
    {"ReadNextRow after CloseReadTable or a counting ExistData",
     [](Failures& failures) {
         failures.database.SqlQueryBegin("SELECT 1");
         failures.database.CloseReadTable();
         failures.Add(failures.database.ReadNextRow(failures.row));
         failures.database.SqlQueryBegin("SELECT 1");
         failures.database.ExistData("t", "", failures.result);
         failures.Add(failures.database.ReadNextRow(failures.row));
     }},
    {"CreateTable, WriteTableValues or another operation with an empty table name",
     [](Failures& failures) {
         failures.Add(failures.database.CreateTable({}));
         Write(OneText("kitchen"), "")(failures);
         failures.Add(failures.database.UpdateTableValues("", OneText("kitchen"), ""));
         failures.Add(failures.database.DropTable(""));
     }},
    {"UpdateTableValues without columns", Update({.columns = {}, .rows = OneText("kitchen").rows}, "")},
    {"Execute with an empty text", Execute("")},
    {"ReadValues or SqlQueryBegin with an empty text",
     [](Failures& failures) {
         failures.Add(failures.database.ReadValues("", failures.data));
         failures.Add(failures.database.SqlQueryBegin(""));
     }},
    {"GetValue of a column that the query of a SqlTable does not have",
     [](Failures& failures) {
         SqlDatabase connection;
         connection.Open(failures.path, true);
         SqlTable table(connection);
         table.Open("SELECT a FROM t");
         table.ReadNext();
         SqlValue value = table["b"];
         value.GetValue<int>();
         failures.AddOf(value, value.GetLastError() == 0);
     }},
    {"AlterTable with a quoted name",
     [](Failures& failures) {
         failures.database.Execute("CREATE TABLE \"my table\" (a)");
         failures.Add(failures.database.AlterTable("\"my table\"", "n"));
     }},
};

class MessagesTest : public testing::TestWithParam<MessagesRow> {};

TEST_P(MessagesTest, RowTellsTheCause)
{
    const MessagesRow& row = GetParam();
    const auto cause = Causes.find(row.cause);
    ASSERT_NE(cause, Causes.end()) << "no test does this: " << row.cause;

    Failures failures;
    cause->second(failures);

    EXPECT_THAT(failures.errors, Not(IsEmpty()));
    EXPECT_THAT(failures.errors, Each(CodeAndMessage{row.code, row.message}));
}

INSTANTIATE_TEST_SUITE_P(Rows, MessagesTest, testing::ValuesIn(MessagesRows()));

TEST(MessagesDocumentTest, HasARowForEveryCause)
{
    std::set<std::string> rows;
    for (const MessagesRow& row : MessagesRows()) {
        rows.insert(row.cause);
    }

    EXPECT_EQ(rows.size(), Causes.size());
}

} // namespace

} // namespace Morvik::sql::tests
