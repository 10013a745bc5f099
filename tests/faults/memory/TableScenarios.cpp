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
const std::string Insert = "INSERT INTO t (name, weight) VALUES ('" + AllocatedText + "', 2.5)";
const std::string Query = "SELECT id, name FROM t WHERE id > ? ORDER BY id";

void MakeClosedFacade(Subject& subject)
{
    subject.facade.emplace();
}

void ArrangeDefinition(Subject& subject)
{
    OpenSubjectFacade(subject);
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

bool Create(Subject& subject, DatabaseApi& facade)
{
    return facade.CreateTable(subject.definition);
}

bool Exists(Subject& subject, DatabaseApi& facade)
{
    return facade.ExistsTable(Table, subject.result);
}

bool Drop(Subject&, DatabaseApi& facade)
{
    return facade.DropTable(Room);
}

// Renames the table, and at the next call renames it back.
bool Alter(Subject& subject, DatabaseApi& facade)
{
    const bool there = subject.timesDone % 2 == 0;
    return facade.AlterTable(there ? Room : Chamber, there ? Chamber : Room);
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

bool Execute(Subject&, DatabaseApi& facade)
{
    return facade.Execute(Insert);
}

bool ExecuteRejected(Subject&, DatabaseApi& facade)
{
    return !facade.Execute(Nonsense) && facade.GetLastError() == SQLITE_ERROR;
}

Report PrepareStatement(Subject& subject)
{
    SqlCommand& statement = subject.statement.emplace(subject.facade->PrepareStatement(Query));
    const auto read = [&] { subject.text += statement.ColumnText(1); };
    return ReportOf(statement.BindInteger(1, 1) && StepRows(statement, read) && statement.Finalize(), statement);
}

// The failed checks of operations without a database; each leaves a different message.
bool UseClosed(Subject& subject, DatabaseApi& facade)
{
    return !facade.CreateTable(subject.definition) && !facade.DropTable(Table) && !facade.AlterTable(Table, Table) &&
           !facade.Execute(Empty) && !facade.WriteTableValues(Empty, subject.write) &&
           !facade.UpdateTableValues(Table, subject.write, Empty) && !facade.ReadValues(Query, subject.data) &&
           !facade.SqlQueryBegin(Query) && !facade.ReadNextRow(subject.row) && facade.CloseReadTable();
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
        S{"Execute", OpenWarmFacade, {20, 1}, On(Facade, Execute)},
        S{"ExecuteRejectedText", OpenWarmFacade, {5, 2}, On(Facade, ExecuteRejected)},
        S{"PrepareStatement", OpenWarmFacade, {10, 2}, PrepareStatement},
        S{"UseClosedFacade", MakeClosedFacade, {0, 1}, On(Facade, UseClosed)},

        S{"CreateTable", ArrangeDefinition, {40, 5}, On(Facade, Create)},
        S{"ExistsTable", OpenSubjectFacade, {10, 2}, On(Facade, Exists)}.WithoutSqlite({{0, ""}}),
        S{"DropTable", OpenWarmFacade, {40, 4}, On(Facade, Drop)}.After("DELETE FROM room").MayPassUndone(),
        S{"AlterTable", OpenWarmFacade, {40, 3}, On(Facade, Alter)}.WithoutSqlite(
            {{113, "No table exists: "}, {7, "unable to open a temporary database file for storing temporary tables"}}),
        S{"ExistData", OpenWarmFacade, {20, 3}, Count}.WithoutSqlite({{0, ""}}).WithoutNew({110, ""}),
        S{"ExistDataFailing", OpenWarmFacade, {20, 3}, FailCount}.WithoutSqlite({{0, ""}}).WithoutNew({110, ""}),

        S{"RenderColumnConstraints", ArrangeLongDefinition, {0, 2}, ColumnConstraints},
        S{"RenderColumnDefinition", ArrangeLongDefinition, {0, 3}, ColumnDefinition},
        S{"RenderForeignKey", ArrangeLongDefinition, {0, 3}, ForeignKey},
        S{"RenderTableConstraint", ArrangeLongDefinition, {0, 4}, TableConstraint},
        S{"CopyDefinition", ArrangeLongDefinition, {0, 5}, CopyDefinition},
    };
}

} // namespace Morvik::sql::tests
