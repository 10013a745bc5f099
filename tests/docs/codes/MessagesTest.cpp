#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <limits>
#include <locale>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "docs/codes/CodesTable.h"
#include "docs/codes/Situation.h"
#include "support/DoubleQuotedTexts.h"
#include "support/NumberLocales.h"
#include "support/TemporaryDirectory.h"

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
    std::string happened;

    friend void PrintTo(const MessagesRow& row, std::ostream* stream) { *stream << row.code << ": " << row.happened; }
};

std::vector<MessagesRow> ReadMessagesTable()
{
    std::vector<MessagesRow> rows;
    std::ifstream file(TKOSQLLITE_MESSAGES_DOCUMENT);
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("|") || line.starts_with("| ---") || line.starts_with("| Code |")) {
            continue;
        }
        const std::vector<std::string> cells = CellsOfTableLine(line);
        const std::string message = WithoutBackticks(cells.at(1));
        rows.push_back({std::stoi(cells.at(0)), message == "(none)" ? "" : message, WithoutBackticks(cells.at(2))});
    }
    return rows;
}

const DbTableColumnValue Kitchen{.type = DbTableColumnType::Text, .value = "kitchen"};
const DbTableColumnValue Null{.type = DbTableColumnType::Null};
const DbTableColumnValue ReadFromNull{.type = DbTableColumnType::None, .value = ""};
const DbTableColumnValue IntInReal{.type = DbTableColumnType::Real, .value = 3};

DbTableDataWrite OneCell(const DbTableColumnValue& cell)
{
    return {.columns = {"b"}, .rows = {{.cells = {cell}}}};
}

const DbTableDataWrite NoRows{.columns = {"b"}, .rows = {}};

DbTableDefinition WithConstraint(DbTableColumnConstraint constraint)
{
    return {.name = "n", .columns = {{.name = "b", .constraintFlags = constraint}}};
}

/// A facade on a temporary file with the table t, whose column a is 1, and a list of the failures.
struct Failures {
    Failures()
    {
        database.OpenDatabase(path, false);
        database.Execute("CREATE TABLE t (a INTEGER UNIQUE, b TEXT); INSERT INTO t VALUES (1, 'one')");
    }

    /// Adds the error of the operation on the facade to the list, or a note that the operation succeeded.
    void Add(bool succeeded) { records.push_back(succeeded ? Record{-1, "succeeded"} : RecordOf(database)); }

    /// Does the same for a prepared statement.
    void Add(bool succeeded, const SqlCommand& command)
    {
        records.push_back(succeeded ? Record{-1, "succeeded"} : RecordOf(command));
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseApi database;
    std::vector<Record> records;
};

using Happening = std::function<void(Failures&)>;

Happening Write(DbTableDataWrite data, std::string table = "t")
{
    return [=](Failures& failures) { failures.Add(failures.database.WriteTableValues(table, data)); };
}

Happening Run(const std::string& sql)
{
    return [=](Failures& failures) { failures.Add(failures.database.Execute(sql)); };
}

void WriteOfAReadNull(Failures& failures)
{
    failures.Add(failures.database.WriteTableValues("t", OneCell(Null)));
    failures.Add(failures.database.WriteTableValues("t", OneCell(ReadFromNull)));
}

void ForeignKey(Failures& failures)
{
    failures.Add(failures.database.CreateTable(
        {.name = "n", .columns = {{.name = "a"}}, .constraints = {.referenceTable = "t", .foreignKey = {"a"}}}));
}

void MissingArgument(Failures& failures)
{
    failures.Add(failures.database.CreateTable(WithConstraint(Check)));
    failures.Add(failures.database.CreateTable(WithConstraint(Default)));
}

Happening InvalidUpdate(const std::string& condition)
{
    return [=](Failures& failures) {
        failures.Add(failures.database.UpdateTableValues("t", OneCell(IntInReal), condition));
        failures.Add(failures.database.UpdateTableValues("t", NoRows, condition));
    };
}

void ConditionWithoutWhere(Failures& failures)
{
    failures.Add(failures.database.UpdateTableValues("t", OneCell(Kitchen), "a = 1"));
}

void CountWithoutWhere(Failures& failures)
{
    int result = 0;
    failures.database.ExistData("t", "a = 1", result);
    failures.Add(result == 0);
}

void DecimalComma(Failures& failures)
{
    const std::locale before = std::locale::global(NumberLocales()[1].locale);
    failures.Add(failures.database.WriteTableValues("t", OneCell({.type = DbTableColumnType::Real, .value = 2.5})));
    std::locale::global(before);
}

void DoubleQuotedTextsOff(Failures& failures)
{
    failures.database.CloseDatabase();
    const DoubleQuotedTexts off(false);
    failures.database.OpenDatabase(failures.path, false);
    failures.Add(failures.database.WriteTableValues("t", OneCell({.type = DbTableColumnType::Text, .value = "TEXT"})));

    // Newer versions of SQLite quote the name and add a hint.
    std::string& message = failures.records.back().message;
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

void CommitAfterRollback(Failures& failures)
{
    failures.database.Execute("BEGIN; INSERT OR ROLLBACK INTO t VALUES (1, 'again')");
    failures.Add(failures.database.Execute("COMMIT"));
}

void WriteWhileAnotherWrites(Failures& failures)
{
    DatabaseApi other;
    other.OpenDatabase(failures.path, false);
    other.Execute("BEGIN IMMEDIATE");
    failures.Add(failures.database.Execute("INSERT INTO t VALUES (2, 'two')"));
}

void WriteFromAnOldState(Failures& failures)
{
    DbTableData mode;
    failures.database.ReadValues("PRAGMA journal_mode = WAL", mode);
    failures.database.Execute("PRAGMA busy_timeout = 10000");
    DatabaseApi other;
    other.OpenDatabase(failures.path, false);
    DbTableRowValues row;
    failures.database.SqlQueryBegin("SELECT a FROM t");
    failures.database.ReadNextRow(row);
    other.Execute("INSERT INTO t VALUES (2, 'two')");
    failures.Add(failures.database.Execute("INSERT INTO t VALUES (3, 'three')"));
}

void CloseAfterARead(Failures& failures)
{
    DbTableData data;
    failures.database.ReadTableValues("t", data);
    failures.Add(failures.database.CloseDatabase());
}

void DropDuringAWalk(Failures& failures)
{
    DbTableRowValues row;
    failures.database.SqlQueryBegin("SELECT a FROM t UNION ALL SELECT a FROM t");
    failures.database.ReadNextRow(row);
    failures.Add(failures.database.DropTable("t"));
}

void WriteReadOnly(Failures& failures)
{
    failures.database.CloseDatabase();
    failures.database.OpenDatabase(failures.path, true);
    failures.Add(failures.database.Execute("INSERT INTO t VALUES (2, 'two')"));
}

void OpenOfWhatIsNoFile(Failures& failures)
{
    failures.database.CloseDatabase();
    failures.Add(failures.database.OpenDatabase(failures.directory.File("absent.db"), true));
    failures.Add(failures.database.OpenDatabase(failures.directory.Path().string(), false));
}

void WriteOnAClosedFacade(Failures& failures)
{
    DatabaseApi fresh;
    const bool executed = fresh.Execute("SELECT 1");
    failures.records.push_back(executed ? Record{} : RecordOf(fresh));
    const bool written = fresh.WriteTableValues("t", OneCell(Kitchen));
    failures.records.push_back(written ? Record{} : RecordOf(fresh));
}

void BindAfterStep(Failures& failures)
{
    SqlCommand command = failures.database.PrepareStatement("SELECT ?");
    command.Step();
    failures.Add(command.BindInteger(1, 1), command);
}

void BindWithIndexZero(Failures& failures)
{
    SqlCommand command = failures.database.PrepareStatement("SELECT ?");
    failures.Add(command.BindInteger(0, 1), command);
}

void NoDatabase(Failures& failures)
{
    failures.database.CloseDatabase();
    std::ofstream(failures.path) << std::string(1000, 'x');
    failures.database.OpenDatabase(failures.path, false);
    DbTableData data;
    failures.Add(failures.database.ReadTableValues("t", data));
    failures.Add(failures.database.Execute("CREATE TABLE n (a)"));
}

void ReadOnAClosedFacade(Failures& failures)
{
    failures.database.CloseDatabase();
    DbTableData data;
    failures.Add(failures.database.ReadTableValues("t", data));
    failures.Add(failures.database.SqlQueryBegin("SELECT 1"));
}

void FetchWithoutAQuery(Failures& failures)
{
    DbTableRowValues row;
    failures.database.SqlQueryBegin("SELECT 1");
    failures.database.CloseReadTable();
    failures.Add(failures.database.ReadNextRow(row));
    int result = 0;
    failures.database.SqlQueryBegin("SELECT 1");
    failures.database.ExistData("t", "", result);
    failures.Add(failures.database.ReadNextRow(row));
}

void RenameOfAQuotedName(Failures& failures)
{
    failures.database.Execute("CREATE TABLE \"my table\" (a)");
    failures.Add(failures.database.AlterTable("\"my table\"", "n"));
}

const std::map<std::string, Happening>& Happenings()
{
    static const std::map<std::string, Happening> All{
        {"WriteTableValues with a Real cell that holds an int", Write(OneCell(IntInReal))},
        {"WriteTableValues with a Null cell, or one that was read from NULL", WriteOfAReadNull},
        {"CreateTable with a foreign key", ForeignKey},
        {"CreateTable with Check or Default without an argument", MissingArgument},
        {"UpdateTableValues with a first cell that is invalid, or without rows", InvalidUpdate("WHERE a = 1")},
        {"WriteTableValues without rows", Write(NoRows)},
        {"UpdateTableValues without rows or with an invalid first cell, and without a condition", InvalidUpdate("")},
        {"UpdateTableValues with the condition a = 1", ConditionWithoutWhere},
        {"ExistData with the condition a = 1", CountWithoutWhere},
        {"a write to the table my table", Write(OneCell(Kitchen), "my table")},
        {"a row with fewer cells than columns", Write({.columns = {"a", "b"}, .rows = {{.cells = {Kitchen}}}})},
        {"a Real cell of 2.5 under a locale with a decimal comma", DecimalComma},
        {"a text with a zero byte", Write(OneCell({.type = DbTableColumnType::Text, .value = std::string("a\0b", 3)}))},
        {"a blob cell that holds a double quotation mark",
         Write(OneCell({.type = DbTableColumnType::Blob, .value = std::vector<char>{'a', '"', 'b'}}))},
        {"a text cell TEXT, with a SQLite that has double-quoted texts off", DoubleQuotedTextsOff},
        {"a Real cell that holds infinity",
         Write(OneCell({.type = DbTableColumnType::Real, .value = std::numeric_limits<double>::infinity()}))},
        {"a text without apostrophes in a condition or a query", Run("SELECT a FROM t WHERE b = kitchen")},
        {"a write to a table that is not there", Write(OneCell(Kitchen), "room")},
        {"PrepareStatement with a text that SQLite rejects, and a Step after that", RejectedStatement},
        {"COMMIT after a failure that ended the transaction", CommitAfterRollback},
        {"a write while another connection writes", WriteWhileAnotherWrites},
        {"a write during a walk in WAL mode, after another connection wrote", WriteFromAnOldState},
        {"CloseDatabase after a read", CloseAfterARead},
        {"DropTable of the table that is walked", DropDuringAWalk},
        {"a write after opening read-only", WriteReadOnly},
        {"opening a file that is not there read-only, or a directory", OpenOfWhatIsNoFile},
        {"a write of a key that is there", Run("INSERT INTO t VALUES (1, 'again')")},
        {"Execute or a write on a facade that is not open", WriteOnAClosedFacade},
        {"a bind after Step without Reset", BindAfterStep},
        {"a bind with index 0", BindWithIndexZero},
        {"the first use of a file that is not a database", NoDatabase},
        {"a read on a facade that is not open", ReadOnAClosedFacade},
        {"ReadNextRow after CloseReadTable or a counting ExistData", FetchWithoutAQuery},
        {"AlterTable with a quoted name", RenameOfAQuotedName},
    };
    return All;
}

class MessagesTest : public testing::TestWithParam<MessagesRow> {};

TEST_P(MessagesTest, RowTellsTheCause)
{
    const MessagesRow& row = GetParam();
    const auto happening = Happenings().find(row.happened);
    ASSERT_NE(happening, Happenings().end()) << "no test does this: " << row.happened;

    Failures failures;
    happening->second(failures);

    EXPECT_THAT(failures.records, Not(IsEmpty()));
    EXPECT_THAT(failures.records, Each(Record{row.code, row.message}));
}

INSTANTIATE_TEST_SUITE_P(Rows, MessagesTest, testing::ValuesIn(ReadMessagesTable()));

TEST(MessagesDocumentTest, HasARowForEveryHappening)
{
    std::set<std::string> rows;
    for (const MessagesRow& row : ReadMessagesTable()) {
        rows.insert(row.happened);
    }

    EXPECT_EQ(rows.size(), Happenings().size());
}

} // namespace

} // namespace Morvik::sql::tests
