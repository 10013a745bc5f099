#include <string>

#include "docs/codes/Situation.h"
#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

Run Executing(const std::string& sql, const Arrange& arrange = Nothing)
{
    return OnAFacade(Raw(FailureOfExec, sql, arrange), Execute(sql));
}

RawFailure FillTheFile(SituationFacade& facade)
{
    facade.database.Execute("PRAGMA max_page_count = 1");
    facade.raw.Execute("PRAGMA max_page_count = 1");
    return {};
}

RawFailure WriteByAnother(SituationFacade& facade)
{
    facade.raw.Execute("BEGIN IMMEDIATE");
    return FailureOfExec(RawSqlite(facade.path).Handle(), "INSERT INTO t VALUES (4)");
}

Run Writing(const std::string& table, const DbTableDataWrite& data, const Arrange& arrange = Nothing)
{
    return OnAFacade(arrange, Write(table, data));
}

Run Updating(const std::string& table, const DbTableDataWrite& data, const Arrange& arrange = Nothing)
{
    return OnAFacade(arrange, Update(table, data, "WHERE a=1"));
}

Arrange Raw(const std::string& sql)
{
    return Raw(FailureOfExec, sql);
}

} // namespace

Situations WritingSituations()
{
    const std::string execute = "IDatabaseApi::Execute";
    const std::string write = "IDatabaseApi::WriteTableValues";
    const std::string update = "IDatabaseApi::UpdateTableValues";
    const std::string insertion = "INSERT INTO t VALUES (4)";
    const std::string largeInsertion = "INSERT INTO t VALUES (zeroblob(100000))";
    const DbTableRowValues one{{IntegerCell(1)}};
    const DbTableRowValues two{{IntegerCell(2)}};
    const DbTableRowValues pair{{IntegerCell(7), IntegerCell(8)}};
    const DbTableRowValues invalid{{IntegerCell(1), InvalidCell(4)}};
    return {
        {execute, "the text is empty", Executing("")},
        {execute, "SQLite rejects the text", Executing("nonsense")},
        {execute, "another connection writes to the file", Executing(insertion, WriteByAnother)},
        {execute, "the database is read only", Executing(insertion, ReadOnly)},
        {execute, "the file is full", Executing(largeInsertion, FillTheFile)},
        {execute, "a constraint is violated", Executing("INSERT INTO t VALUES (1)")},
        {execute, "the file is no database", Executing("SELECT * FROM t", OnALetter)},
        {execute, "the database is closed", Executing("SELECT 1", Closed)},
        {write, "the name is empty", Writing("", {{"a"}, {one}})},
        {write, "there are no rows", Writing("t", {{"a"}, {}}, Raw("INSERT INTO t (a) VALUES"))},
        {write, "a row has no cells", Writing("t", {{"a"}, {{}}}, Raw("INSERT INTO t (a) VALUES ()"))},
        {write, "a row has a cell too many", Writing("t", {{"a"}, {pair}}, Raw("INSERT INTO t (a) VALUES (7,8)"))},
        {write, "a later column name is empty", Writing("t", {{"a", ""}, {one}}, Raw("INSERT INTO t (a,) VALUES (1)"))},
        {write, "a cell has no SQL text", Writing("t", {{"a"}, {invalid}}, Raw("INSERT INTO t (a) VALUES (1,)"))},
        {write, "a cell has no SQL text and SQLite accepts the statement",
         Writing("t VALUES (7) --", {{"a"}, {invalid}})},
        {write, "a constraint is violated", Writing("t", {{"a"}, {one}}, Raw("INSERT INTO t (a) VALUES (1)"))},
        {write, "the database is closed", Writing("t", {{"a"}, {one}}, Closed)},
        {update, "the name is empty", Updating("", {{"a"}, {two}})},
        {update, "there are no column names", Updating("t", {{}, {two}})},
        {update, "every column name is empty", Updating("t", {{"", ""}, {two}}, Raw("UPDATE t SET=(2) WHERE a=1"))},
        {update, "there are no rows", Updating("t", {{"a"}, {}}, Raw("UPDATE t SET (a)=WHERE a=1"))},
        {update, "a row has a cell too many", Updating("t", {{"a"}, {pair}}, Raw("UPDATE t SET (a)=(7,8) WHERE a=1"))},
        {update, "a cell has no SQL text", Updating("t", {{"a"}, {invalid}}, Raw("UPDATE t SET (a)=(1,) WHERE a=1"))},
        {update, "a cell has no SQL text and SQLite accepts the statement",
         Updating("t SET a = a --", {{"a"}, {invalid}})},
        {update, "the condition lacks its keyword",
         OnAFacade(Raw("UPDATE t SET (a)=(2) a=1"), Update("t", DbTableDataWrite{{"a"}, {two}}, "a=1"))},
        {update, "a constraint is violated", Updating("t", {{"a"}, {two}}, Raw("UPDATE t SET (a)=(2) WHERE a=1"))},
        {update, "the database is closed", Updating("t", {{"a"}, {two}}, Closed)},
    };
}

} // namespace Morvik::sql::tests
