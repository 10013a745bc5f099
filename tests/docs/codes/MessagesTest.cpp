#include <sql/SqlTable.h>
#include <sql/SqlValue.h>

#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "docs/codes/DocumentTable.h"
#include "docs/codes/Situation.h"
#include "support/Cells.h"
#include "support/DoubleQuotedTexts.h"
#include "support/NumberLocales.h"

namespace Morvik::sql::tests {

namespace {

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

using Step = std::function<CodeAndMessage(SituationFacade&)>;

/// The steps that create the cause, and the steps that then fail.
struct Cause {
    std::vector<std::function<void(SituationFacade&)>> before;
    std::vector<Step> failing;
};

const CodeAndMessage Succeeded{-1, "succeeded"};

/// An operation of the facade.
template <typename Operation>
Step On(Operation operation)
{
    return [=](SituationFacade& facade) {
        return std::invoke(operation, facade.database) ? Succeeded : ErrorOf(facade.database);
    };
}

template <typename... Operations>
Cause Failures(const Operations&... operations)
{
    return {{}, {On(operations)...}};
}

DbTableDataWrite OneCell(const DbTableColumnValue& cell)
{
    return {.columns = {"a"}, .rows = {{.cells = {cell}}}};
}

const DbTableDataWrite IntInReal = OneCell({.type = DbTableColumnType::Real, .value = 3});
const DbTableDataWrite NoRows{.columns = {"a"}, .rows = {}};
const DbTableDataWrite Kitchen = OneCell(TextCell("kitchen"));
const std::string Insertion = "INSERT INTO t VALUES (4)";

Step Open(const std::string& name, bool readOnly)
{
    return [=](SituationFacade& facade) {
        facade.Reopen(facade.directory.File(name), readOnly);
        return facade.database.IsOpen() ? Succeeded : ErrorOf(facade.database);
    };
}

CodeAndMessage WriteWithoutDoubleQuotedTexts(SituationFacade& facade)
{
    const DoubleQuotedTexts off(false);
    facade.Reopen(facade.path, false);
    CodeAndMessage error = On(Write("t", OneCell(TextCell("TEXT"))))(facade);
    // Newer versions of SQLite quote the name and add a hint.
    if (error.message == R"(no such column: "TEXT" - should this be a string literal in single-quotes?)") {
        error.message = "no such column: TEXT";
    }
    return error;
}

bool WriteRealWithAComma(DatabaseApi& database)
{
    const ScopedGlobalLocale comma;
    return database.WriteTableValues("t", OneCell(RealCell(2.5)));
}

bool CountWithoutKeyword(DatabaseApi& database)
{
    int result = 0;
    database.ExistData("t", "a = 1", result);
    return result == 0;
}

bool ReadNext(DatabaseApi& database)
{
    DbTableRowValues row;
    return database.ReadNextRow(row);
}

bool ReadNextAfterACount(DatabaseApi& database)
{
    int result = 0;
    database.SqlQueryBegin("SELECT 1");
    database.ExistData("t", "", result);
    return ReadNext(database);
}

Step OnAnother(const std::string& sql)
{
    return [=](SituationFacade& facade) {
        facade.raw.Execute(sql);
        return Succeeded;
    };
}

Step PrepareRejected(bool thenStep)
{
    return [=](SituationFacade& facade) {
        SqlCommand command = facade.database.PrepareStatement("SELEC 1");
        return thenStep && command.Step() ? Succeeded : ErrorOf(command);
    };
}

Step Bind(bool stepped, int index)
{
    return [=](SituationFacade& facade) {
        SqlCommand command = facade.database.PrepareStatement("SELECT ?");
        if (stepped) {
            command.Step();
        }
        return command.BindInteger(index, 1) ? Succeeded : ErrorOf(command);
    };
}

CodeAndMessage ReadAbsentColumn(SituationFacade& facade)
{
    SqlDatabase connection;
    connection.Open(facade.path, true);
    SqlTable table(connection);
    table.Open("SELECT a FROM t");
    table.ReadNext();
    SqlValue value = table["b"];
    value.GetValue<int>();
    return ErrorOf(value);
}

const std::map<std::string, Cause> Causes{
    {"WriteTableValues with a Real cell that holds an int", Failures(Write("t", IntInReal))},
    {"WriteTableValues with a Null cell, or one that was read from NULL",
     Failures(Write("t", OneCell(InvalidCell())), Write("t", OneCell({.type = DbTableColumnType::None, .value = ""})))},
    {"CreateTable with a foreign key",
     Failures(CreateTable(DbTableDefinition{"n", {{.name = "a"}}, {.referenceTable = "t", .foreignKey = {"a"}}}))},
    {"CreateTable with Check or Default without an argument",
     Failures(CreateTable(DbTableDefinition{"n", {{.name = "b", .constraintFlags = Check}}}),
              CreateTable(DbTableDefinition{"n", {{.name = "b", .constraintFlags = Default}}}))},
    {"UpdateTableValues with a first cell that is invalid, or without rows",
     Failures(Update("t", IntInReal, "WHERE a=1"), Update("t", NoRows, "WHERE a=1"))},
    {"WriteTableValues without rows", Failures(Write("t", NoRows))},
    {"UpdateTableValues without rows or with an invalid first cell, and without a condition",
     Failures(Update("t", IntInReal, ""), Update("t", NoRows, ""))},
    {"UpdateTableValues with the condition a = 1", Failures(Update("t", Kitchen, "a = 1"))},
    {"ExistData with the condition a = 1", Failures(CountWithoutKeyword)},
    {"a write to the table my table", Failures(Write("my table", Kitchen))},
    {"a row with fewer cells than columns", Failures(Write("t", DbTableDataWrite{{"a", "rowid"}, Kitchen.rows}))},
    {"a Real cell of 2.5 under a locale with a decimal comma", Failures(WriteRealWithAComma)},
    {"a text with a zero byte", Failures(Write("t", OneCell(TextCell(std::string("a\0b", 3)))))},
    {"a blob cell that holds a double quotation mark", Failures(Write("t", OneCell(BlobCell("a\"b"))))},
    {"a text cell TEXT, with a SQLite that has double-quoted texts off", {{}, {WriteWithoutDoubleQuotedTexts}}},
    {"a Real cell that holds infinity",
     Failures(Write("t", OneCell(RealCell(std::numeric_limits<double>::infinity()))))},
    {"a text without apostrophes in a condition or a query",
     Failures(Execute("SELECT a FROM t WHERE a = kitchen"), Update("t", Kitchen, "WHERE a = kitchen"))},
    {"a write to a table that is not there", Failures(Write("room", Kitchen))},
    {"PrepareStatement with a text that SQLite rejects, and a Step after that",
     {{}, {PrepareRejected(false), PrepareRejected(true)}}},
    {"COMMIT after a failure that ended the transaction",
     {{On(Execute("BEGIN; INSERT OR ROLLBACK INTO t VALUES (1)"))}, {On(Execute("COMMIT"))}}},
    {"a write while another connection writes", {{OnAnother("BEGIN IMMEDIATE")}, {On(Execute(Insertion))}}},
    {"a write during a walk in WAL mode, after another connection wrote",
     {{On(Read("PRAGMA journal_mode = WAL")), On(Execute("PRAGMA busy_timeout = 10000")), On(Begin("SELECT a FROM t")),
       On(ReadNext), OnAnother("INSERT INTO t VALUES (5)")},
      {On(Execute(Insertion))}}},
    {"CloseDatabase after a read", {{On(ReadTable("t"))}, {On(&DatabaseApi::CloseDatabase)}}},
    {"DropTable of the table that is walked",
     {{On(Begin("SELECT a FROM t UNION ALL SELECT a FROM t")), On(ReadNext)}, {On(DropTable("t"))}}},
    {"a write after opening read-only", {{Open("test.db", true)}, {On(Execute(Insertion))}}},
    {"opening a directory read-only", {{}, {Open(".", true)}}},
    {"opening a file that is not there read-only, or a directory to write",
     {{}, {Open("absent.db", true), Open(".", false)}}},
    {"a write of a key that is there", Failures(Execute("INSERT INTO t VALUES (1)"))},
    {"Execute or a write on a facade that is not open",
     {{On(&DatabaseApi::CloseDatabase)}, {On(Execute("SELECT 1")), On(Write("t", Kitchen))}}},
    {"a bind after Step without Reset", {{}, {Bind(true, 1)}}},
    {"a bind with index 0", {{}, {Bind(false, 0)}}},
    {"the first use of a file that is not a database",
     {{OnALetter}, {On(ReadTable("t")), On(Execute("CREATE TABLE n (a)"))}}},
    {"a read on a facade that is not open",
     {{On(&DatabaseApi::CloseDatabase)}, {On(ReadTable("t")), On(Begin("SELECT 1"))}}},
    {"ReadNextRow after CloseReadTable or a counting ExistData",
     {{On(Begin("SELECT 1")), On(&DatabaseApi::CloseReadTable)}, {On(ReadNext), On(ReadNextAfterACount)}}},
    {"CreateTable, WriteTableValues or another operation with an empty table name",
     Failures(CreateTable(DbTableDefinition()), Write("", Kitchen), Update("", Kitchen, ""), DropTable(""))},
    {"UpdateTableValues without columns", Failures(Update("t", DbTableDataWrite{{}, Kitchen.rows}, ""))},
    {"Execute with an empty text", Failures(Execute(""))},
    {"ReadValues or SqlQueryBegin with an empty text", Failures(Read(""), Begin(""))},
    {"GetValue of a column that the query of a SqlTable does not have", {{}, {ReadAbsentColumn}}},
    {"AlterTable with a quoted name",
     {{On(Execute("CREATE TABLE \"my table\" (a)"))}, {On(AlterTable("\"my table\"", "n"))}}},
};

class MessagesTest : public testing::TestWithParam<MessagesRow> {};

TEST_P(MessagesTest, CauseGivesTheCodeAndMessageOfTheRow)
{
    const MessagesRow& row = GetParam();
    const auto cause = Causes.find(row.cause);
    ASSERT_NE(cause, Causes.end()) << "no test does this: " << row.cause;
    ASSERT_FALSE(cause->second.failing.empty());
    SituationFacade facade;
    for (const auto& step : cause->second.before) {
        step(facade);
    }

    for (const Step& step : cause->second.failing) {
        EXPECT_EQ(step(facade), (CodeAndMessage{row.code, row.message}));
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, MessagesTest, testing::ValuesIn(MessagesRows()),
                         [](const auto& row) { return ParameterName(row.param.cause); });

TEST(MessagesDocumentTest, HasARowForEveryCause)
{
    EXPECT_EQ(MessagesRows().size(), Causes.size()); // each row has another cause, or the tests would have equal names
}

} // namespace

} // namespace Morvik::sql::tests
