// Statements and tables of the facade, and the texts of definitions.
#include <sqlite3.h>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Table = "t";
const std::string Room = "room";
const std::string Chamber = "chamber";
const std::string Empty;
const std::string Condition = "WHERE name <> 'nobody' AND length(name) > 1";
const std::string FailingCondition = "WHERE abs(-9223372036854775807 - 1)";
const std::string Nonsense = "SELECT nothing_of_that_name FROM t";
const std::string Insert = "INSERT INTO t (name, weight) VALUES ('" + LongText + "', 2.5)";
const std::string Query = "SELECT id, name FROM t WHERE id > ? ORDER BY id";

void MakeClosedFacade(Subject& subject)
{
    subject.facade.emplace();
}

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

void ArrangeLongDefinition(Subject& subject)
{
    subject.definition.name = "reading";
    subject.definition.columns = {{"name of the room",
                                   DbTableColumnType::Text,
                                   0,
                                   NotNull | Check | Default,
                                   {{Check, "(length(name) > 0)"}, {Default, "'the hall on the ground floor'"}}}};
    subject.definition.constraints.primaryKey = {'a', 'b'};
    subject.definition.constraints.unique = {'c'};
    subject.definition.constraints.referenceTable = "the other table of the two";
    subject.definition.constraints.foreignKey = {"room of the reading", "time of the reading"};
}

Report Create(Subject& subject)
{
    return ReportOf(subject.facade->CreateTable(subject.definition), *subject.facade);
}

Report Exists(Subject& subject)
{
    return ReportOf(subject.facade->ExistsTable(Table, subject.result), *subject.facade);
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

Report Execute(Subject& subject)
{
    return ReportOf(subject.facade->Execute(Insert), *subject.facade);
}

Report ExecuteRejected(Subject& subject)
{
    const bool executed = subject.facade->Execute(Nonsense);
    return ReportOf(!executed && subject.facade->GetLastError() == SQLITE_ERROR, *subject.facade);
}

Report PrepareStatement(Subject& subject)
{
    SqlCommand& statement = subject.statement.emplace(subject.facade->PrepareStatement(Query));
    const bool read =
        statement.BindInteger(1, 1) && StepRows(statement, [&] { subject.text += statement.ColumnText(1); });
    return ReportOf(read && statement.Finalize(), statement);
}

// The failed checks of operations without a database; each leaves a different message.
Report UseClosed(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    const bool refused =
        !facade.CreateTable(subject.definition) && !facade.DropTable(Table) && !facade.AlterTable(Table, Table) &&
        !facade.Execute(Empty) && !facade.WriteTableValues(Empty, subject.write) &&
        !facade.UpdateTableValues(Table, subject.write, Empty) && !facade.ReadValues(Query, subject.data) &&
        !facade.SqlQueryBegin(Query) && !facade.ReadNextRow(subject.row) && facade.CloseReadTable();
    return ReportOf(refused, facade);
}

template <auto Part, auto Render>
Report RenderPart(Subject& subject)
{
    subject.text = (Part(subject.definition).*Render)();
    return {true, 0, ""};
}

const DbTableColumnDefinition& FirstColumn(const DbTableDefinition& definition)
{
    return definition.columns.front();
}

const DbTableConstraints& Constraints(const DbTableDefinition& definition)
{
    return definition.constraints;
}

const DbTableDefinition& Itself(const DbTableDefinition& definition)
{
    return definition;
}

Report CopyDefinition(Subject& subject)
{
    const DbTableDefinition copy = subject.definition;
    return {copy.constraints.foreignKey == subject.definition.constraints.foreignKey, 0, ""};
}

} // namespace

std::vector<Scenario> TableScenarios()
{
    using S = Scenario;
    using Column = DbTableColumnDefinition;
    constexpr auto ColumnConstraints = RenderPart<FirstColumn, &Column::ColumnConstraintsAsString>;
    constexpr auto ColumnDefinition = RenderPart<FirstColumn, &Column::ColumnDefinitionAsString>;
    constexpr auto ForeignKey = RenderPart<Constraints, &DbTableConstraints::ForeignKeyConstraintAsString>;
    constexpr auto TableConstraint = RenderPart<Itself, &DbTableDefinition::TableConstraintAsString>;
    return {
        S{"Execute", OpenWarmFacade, Execute, {20, 1}},
        S{"ExecuteRejectedText", OpenWarmFacade, ExecuteRejected, {5, 2}},
        S{"PrepareStatement", OpenWarmFacade, PrepareStatement, {10, 2}},
        S{"UseClosedFacade", MakeClosedFacade, UseClosed, {0, 1}},

        S{"CreateTable", ArrangeDefinition, Create, {40, 5}},
        S{"ExistsTable", OpenFacade, Exists, {10, 2}}.WithoutSqlite({{0, ""}}),
        S{"DropTable", OpenWarmFacade, Drop, {40, 4}}.After("DELETE FROM room").MayPassUndone(),
        S{"AlterTable", OpenWarmFacade, Alter, {40, 3}}.WithoutSqlite(
            {{113, "No table exists: "}, {7, "unable to open a temporary database file for storing temporary tables"}}),
        S{"ExistData", OpenWarmFacade, Count, {20, 3}}.WithoutSqlite({{0, ""}}).WithoutNew({110, ""}),
        S{"ExistDataFailing", OpenWarmFacade, FailCount, {20, 3}}.WithoutSqlite({{0, ""}}).WithoutNew({110, ""}),

        S{"RenderColumnConstraints", ArrangeLongDefinition, ColumnConstraints, {0, 2}},
        S{"RenderColumnDefinition", ArrangeLongDefinition, ColumnDefinition, {0, 3}},
        S{"RenderForeignKey", ArrangeLongDefinition, ForeignKey, {0, 3}},
        S{"RenderTableConstraint", ArrangeLongDefinition, TableConstraint, {0, 4}},
        S{"CopyDefinition", ArrangeLongDefinition, CopyDefinition, {0, 5}},
    };
}

} // namespace Morvik::sql::tests
