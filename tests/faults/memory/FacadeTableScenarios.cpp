#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Table = "t";
const std::string Room = "room";
const std::string Chamber = "chamber";
const std::string Condition = "WHERE name <> 'nobody' AND length(name) > 1";
const std::string FailingCondition = "WHERE abs(-9223372036854775807 - 1)";

void ArrangeDefinition(Subject& subject)
{
    OpenFacade(subject);
    subject.definition.name = "made";
    subject.definition.columns = {
        {"id", DbTableColumnType::Integer, 0, PrimaryKey, {{PrimaryKey, "AUTOINCREMENT"}}},
        {"a", DbTableColumnType::Text, 0, NotNull | Check | Default, {{Check, "(a <> '')"}, {Default, "'none'"}}},
        {"b", DbTableColumnType::Real}};
    subject.definition.constraints.unique = {'a', 'b'};
}

Report Create(Subject& subject)
{
    return ReportOf(subject.facade->CreateTable(subject.definition), *subject.facade);
}

Report Exists(Subject& subject)
{
    const bool exists = subject.facade->ExistsTable(Table, subject.result);
    return ReportOf(exists, *subject.facade);
}

Report Drop(Subject& subject)
{
    return ReportOf(subject.facade->DropTable(Room), *subject.facade);
}

// Renames the table, and at the next call renames it back.
Report Alter(Subject& subject)
{
    const bool there = subject.timesDone % 2 == 0;
    return ReportOf(subject.facade->AlterTable(there ? Room : Chamber, there ? Chamber : Room), *subject.facade);
}

Report Count(Subject& subject)
{
    const int rows = subject.facade->ExistData(Table, Condition, subject.result);
    return {rows == 2 && subject.result == 0, subject.result, subject.facade->GetLastErrorMsg()};
}

Report FailCount(Subject& subject)
{
    const int rows = subject.facade->ExistData(Table, FailingCondition, subject.result);
    return {rows == 0 && subject.result == 1, subject.result, subject.facade->GetLastErrorMsg()};
}

} // namespace

std::vector<Scenario> FacadeTableScenarios()
{
    return {
        {.name = "CreateTable", .arrange = ArrangeDefinition, .act = Create, .least = {40, 5}},
        {.name = "ExistsTable", .arrange = OpenFacade, .act = Exists, .least = {10, 2}, .refusalsForSqlite = {{0, ""}}},
        {.name = "DropTable",
         .arrange = OpenWarmFacade,
         .act = Drop,
         .least = {40, 4},
         .firstSteps = {"DELETE FROM room"},
         .mayPassUndone = true},
        {.name = "AlterTable",
         .arrange = OpenWarmFacade,
         .act = Alter,
         .least = {40, 3},
         .refusalsForSqlite = {{113, "No table exists: "},
                               {7, "unable to open a temporary database file for storing temporary tables"}}},
        {.name = "ExistData",
         .arrange = OpenWarmFacade,
         .act = Count,
         .least = {20, 3},
         .refusalsForSqlite = {{0, ""}},
         .refusalsForNew = {{110, ""}}},
        {.name = "ExistDataFailing",
         .arrange = OpenWarmFacade,
         .act = FailCount,
         .least = {20, 3},
         .refusalsForSqlite = {{0, ""}},
         .refusalsForNew = {{110, ""}}},
    };
}

} // namespace Morvik::sql::tests
