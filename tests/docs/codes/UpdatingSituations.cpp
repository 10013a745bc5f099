#include <string>

#include "docs/codes/SituationFacade.h"
#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

const std::string First = "WHERE a=1";

Outcome Updated(const std::string& table, const DbTableDataWrite& data, const std::string& condition,
                const std::string& sql, bool open = true)
{
    SituationFacade facade(open);
    Outcome outcome = Observe(
        facade.database, [&] { return facade.database.UpdateTableValues(table, data, condition); },
        FailureOfExec(facade.plain.Handle(), sql));
    outcome.names = {{"position", "1"}, {"column", "4"}};
    return outcome;
}

std::function<Outcome()> Updating(const std::string& table, const DbTableDataWrite& data, const std::string& sql = "",
                                  const std::string& condition = First)
{
    return [=] { return Updated(table, data, condition, sql); };
}

} // namespace

Situations UpdatingSituations()
{
    const std::string update = "IDatabaseApi::UpdateTableValues";
    const DbTableRowValues two{{IntegerCell(2)}};
    const DbTableRowValues invalid{{IntegerCell(2), InvalidCell(4)}};
    return {
        {update, "the name is empty", Updating("", {{"a"}, {two}})},
        {update, "there are no column names", Updating("t", {{}, {two}})},
        {update, "every column name is empty", Updating("t", {{"", ""}, {two}}, "UPDATE t SET=(2) WHERE a=1")},
        {update, "there are no rows", Updating("t", {{"a"}, {}}, "UPDATE t SET (a)=WHERE a=1")},
        {update, "a row has a cell too many",
         Updating("t", {{"a"}, {{{IntegerCell(7), IntegerCell(8)}}}}, "UPDATE t SET (a)=(7,8) WHERE a=1")},
        {update, "a cell has no SQL text", Updating("t", {{"a"}, {invalid}}, "UPDATE t SET (a)=(2,) WHERE a=1")},
        {update, "a cell has no SQL text and SQLite accepts the statement",
         Updating("t SET a = a --", {{"a"}, {invalid}})},
        {update, "the condition lacks its keyword", Updating("t", {{"a"}, {two}}, "UPDATE t SET (a)=(2) a=1", "a=1")},
        {update, "a constraint is violated", Updating("t", {{"a"}, {two}}, "UPDATE t SET (a)=(2) WHERE a=1")},
        {update, "the database is closed",
         [=] {
             return Updated("t", {{"a"}, {two}}, First, "", false);
         }},
    };
}

} // namespace Morvik::sql::tests
