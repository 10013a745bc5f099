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
const std::string SecondInsertion = "INSERT INTO t VALUES (2, 'two')";

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

/// A facade on a temporary file with the table t, whose column a is 1, and a list of its failures.
struct Failures {
    Failures()
    {
        database.OpenDatabase(path, false);
        database.Execute("CREATE TABLE t (a INTEGER UNIQUE, b TEXT); INSERT INTO t VALUES (1, 'one')");
    }

    /// Adds the error of the operation to the list, or a note that the operation succeeded.
    template <typename Object>
    void Add(bool succeeded, const Object& object)
    {
        errors.push_back(succeeded ? CodeAndMessage{-1, "succeeded"} : ErrorOf(object));
    }

    /// The same for an operation of the facade.
    void Add(bool succeeded) { Add(succeeded, database); }

    void Execute(const std::string& sql) { Add(database.Execute(sql)); }
    void Write(const DbTableDataWrite& request, const std::string& table = "t")
    {
        Add(database.WriteTableValues(table, request));
    }
    void Update(const DbTableDataWrite& request, const std::string& condition)
    {
        Add(database.UpdateTableValues("t", request, condition));
    }
    void Create(const DbTableColumnDefinition& column, const DbTableConstraints& constraints = {})
    {
        Add(database.CreateTable({.name = "n", .columns = {column}, .constraints = constraints}));
    }
    void Open(const std::string& file, bool readOnly = false) { Add(database.OpenDatabase(file, readOnly)); }
    void Read() { Add(database.ReadTableValues("t", data)); }
    void Fetch() { Add(database.ReadNextRow(row)); }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseApi database;
    DbTableData data;
    DbTableRowValues row;
    int result = 0;
    std::vector<CodeAndMessage> errors;
};

void WriteWithoutDoubleQuotedTexts(Failures& failures)
{
    failures.database.CloseDatabase();
    const DoubleQuotedTexts off(false);
    failures.database.OpenDatabase(failures.path, false);
    failures.Write(OneText("TEXT"));

    // Newer versions of SQLite quote the name and add a hint.
    std::string& message = failures.errors.back().message;
    if (message == R"(no such column: "TEXT" - should this be a string literal in single-quotes?)") {
        message = "no such column: TEXT";
    }
}

void RejectedStatement(Failures& failures)
{
    SqlCommand command = failures.database.PrepareStatement("SELEC 1");
    failures.Add(command.GetLastError() == 0, command);
    failures.Add(command.Step(), command);
}

void WriteWhileAnotherWrites(Failures& failures)
{
    DatabaseApi other;
    other.OpenDatabase(failures.path, false);
    other.Execute("BEGIN IMMEDIATE");
    failures.Execute(SecondInsertion);
}

void WriteFromAnOldState(Failures& failures)
{
    failures.database.ReadValues("PRAGMA journal_mode = WAL", failures.data);
    failures.database.Execute("PRAGMA busy_timeout = 10000");
    DatabaseApi other;
    other.OpenDatabase(failures.path, false);
    failures.database.SqlQueryBegin("SELECT a FROM t");
    failures.database.ReadNextRow(failures.row);
    other.Execute(SecondInsertion);
    failures.Execute("INSERT INTO t VALUES (3, 'three')");
}

void WriteOnAClosedFacade(Failures& failures)
{
    DatabaseApi closed;
    failures.Add(closed.Execute("SELECT 1"), closed);
    failures.Add(closed.WriteTableValues("t", OneText("kitchen")), closed);
}

void Bind(Failures& failures, bool stepped, int index)
{
    SqlCommand command = failures.database.PrepareStatement("SELECT ?");
    if (stepped) {
        command.Step();
    }
    failures.Add(command.BindInteger(index, 1), command);
}

void UseWhatIsNoDatabase(Failures& failures)
{
    failures.database.CloseDatabase();
    std::ofstream(failures.path) << std::string(1000, 'x');
    failures.database.OpenDatabase(failures.path, false);
    failures.Read();
    failures.Execute("CREATE TABLE n (a)");
}

using Cause = std::function<void(Failures&)>;

Cause Write(const DbTableDataWrite& data, const std::string& table = "t")
{
    return [=](Failures& failures) { failures.Write(data, table); };
}

Cause InvalidUpdates(const std::string& condition)
{
    return [=](Failures& failures) {
        failures.Update(OneCell(IntInReal), condition);
        failures.Update(NoRows, condition);
    };
}

const std::map<std::string, Cause> Causes{
    {"WriteTableValues with a Real cell that holds an int", Write(OneCell(IntInReal))},
    {"WriteTableValues with a Null cell, or one that was read from NULL",
     [](Failures& failures) {
         failures.Write(OneCell({.type = DbTableColumnType::Null}));
         failures.Write(OneCell({.type = DbTableColumnType::None, .value = ""}));
     }},
    {"CreateTable with a foreign key",
     [](Failures& failures) { failures.Create({.name = "a"}, {.referenceTable = "t", .foreignKey = {"a"}}); }},
    {"CreateTable with Check or Default without an argument",
     [](Failures& failures) {
         failures.Create({.name = "b", .constraintFlags = Check});
         failures.Create({.name = "b", .constraintFlags = Default});
     }},
    {"UpdateTableValues with a first cell that is invalid, or without rows", InvalidUpdates("WHERE a = 1")},
    {"WriteTableValues without rows", Write(NoRows)},
    {"UpdateTableValues without rows or with an invalid first cell, and without a condition", InvalidUpdates("")},
    {"UpdateTableValues with the condition a = 1",
     [](Failures& failures) { failures.Update(OneText("kitchen"), "a = 1"); }},
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
         failures.Write(OneReal(2.5));
     }},
    {"a text with a zero byte", Write(OneText(std::string("a\0b", 3)))},
    {"a blob cell that holds a double quotation mark",
     Write(OneCell({.type = DbTableColumnType::Blob, .value = std::vector<char>{'a', '"', 'b'}}))},
    {"a text cell TEXT, with a SQLite that has double-quoted texts off", WriteWithoutDoubleQuotedTexts},
    {"a Real cell that holds infinity", Write(OneReal(std::numeric_limits<double>::infinity()))},
    {"a text without apostrophes in a condition or a query",
     [](Failures& failures) { failures.Execute("SELECT a FROM t WHERE b = kitchen"); }},
    {"a write to a table that is not there", Write(OneText("kitchen"), "room")},
    {"PrepareStatement with a text that SQLite rejects, and a Step after that", RejectedStatement},
    {"COMMIT after a failure that ended the transaction",
     [](Failures& failures) {
         failures.database.Execute("BEGIN; INSERT OR ROLLBACK INTO t VALUES (1, 'again')");
         failures.Execute("COMMIT");
     }},
    {"a write while another connection writes", WriteWhileAnotherWrites},
    {"a write during a walk in WAL mode, after another connection wrote", WriteFromAnOldState},
    {"CloseDatabase after a read",
     [](Failures& failures) {
         failures.database.ReadTableValues("t", failures.data);
         failures.Add(failures.database.CloseDatabase());
     }},
    {"DropTable of the table that is walked",
     [](Failures& failures) {
         failures.database.SqlQueryBegin("SELECT a FROM t UNION ALL SELECT a FROM t");
         failures.database.ReadNextRow(failures.row);
         failures.Add(failures.database.DropTable("t"));
     }},
    {"a write after opening read-only",
     [](Failures& failures) {
         failures.database.CloseDatabase();
         failures.database.OpenDatabase(failures.path, true);
         failures.Execute(SecondInsertion);
     }},
    {"opening a file that is not there read-only, or a directory",
     [](Failures& failures) {
         failures.database.CloseDatabase();
         failures.Open(failures.directory.File("absent.db"), true);
         failures.Open(failures.directory.Path().string());
     }},
    {"a write of a key that is there",
     [](Failures& failures) { failures.Execute("INSERT INTO t VALUES (1, 'again')"); }},
    {"Execute or a write on a facade that is not open", WriteOnAClosedFacade},
    {"a bind after Step without Reset", [](Failures& failures) { Bind(failures, true, 1); }},
    {"a bind with index 0", [](Failures& failures) { Bind(failures, false, 0); }},
    {"the first use of a file that is not a database", UseWhatIsNoDatabase},
    {"a read on a facade that is not open",
     [](Failures& failures) {
         failures.database.CloseDatabase();
         failures.Read();
         failures.Add(failures.database.SqlQueryBegin("SELECT 1"));
     }},
    {"ReadNextRow after CloseReadTable or a counting ExistData",
     [](Failures& failures) {
         failures.database.SqlQueryBegin("SELECT 1");
         failures.database.CloseReadTable();
         failures.Fetch();
         failures.database.SqlQueryBegin("SELECT 1");
         failures.database.ExistData("t", "", failures.result);
         failures.Fetch();
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
