// Statements and tables of the facade, and the texts of definitions.
#include <sqlite3.h>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

using enum DbTableColumnType;

void ArrangeDefinition(Subject& subject)
{
    OpenFacade(subject);
    subject.definition = {"made",
                          {{"id", Integer, 0, PrimaryKey, {{PrimaryKey, "AUTOINCREMENT"}}},
                           {"a", Text, 0, NotNull | Check | Default, {{Check, "(a <> '')"}, {Default, "'none'"}}},
                           {"b", Real}},
                          {.unique = {'a', 'b'}}};
}

void ArrangeLongDefinition(Subject& subject)
{
    subject.definition = {"reading",
                          {{"name of the room",
                            Text,
                            0,
                            NotNull | Check | Default,
                            {{Check, "(length(name) > 0)"}, {Default, "'the hall on the ground floor'"}}}},
                          {.primaryKey = {'a', 'b'},
                           .unique = {'c'},
                           .referenceTable = "the other table of the two",
                           .foreignKey = {"room of the reading", "time of the reading"}}};
}

void AddCounting(ScenarioList& list, const std::string& name, const std::string& condition, int rows, int result)
{
    const Allocations allocations{.ofSqlite = 20, .ofNew = 3, .errorsOfSqlite = {{0, ""}}, .errorsOfNew = {{110, ""}}};
    list.Add(name, Warm<OpenFacade>, allocations, [=](Subject& subject) {
        const int counted = subject.facade->ExistData("t", condition, subject.result);
        return Report(counted == rows && subject.result == result, subject.result, subject.facade->GetLastErrorMsg());
    });
}

void AddRendering(ScenarioList& list, const std::string& name, int allocations,
                  std::string (*render)(const DbTableDefinition& definition))
{
    list.Add(name, ArrangeLongDefinition, {0, allocations}, [=](Subject& subject) {
        subject.text = render(subject.definition);
        return Report(true, 0, "");
    });
}

} // namespace

void AddTableScenarios(ScenarioList& list)
{
    using Definition = DbTableDefinition;

    list.Add("Execute", Warm<OpenFacade>, {20, 0}, Facade,
             [](Subject&, DatabaseApi& facade) { return facade.Execute(Insert); });
    list.Add("ExecuteRejectedText", Warm<OpenFacade>, {5, 2}, Facade, [](Subject&, DatabaseApi& facade) {
        return !facade.Execute(Malformed) && facade.GetLastError() == SQLITE_ERROR;
    });
    list.Add("PrepareStatement", Warm<OpenFacade>, {10, 2}, [](Subject& subject) {
        SqlCommand& statement = subject.command.emplace(subject.facade->PrepareStatement(BoundQuery));
        const auto read = [&] { subject.Note(statement.ColumnText(1)); };
        return Report(statement.BindInteger(1, 1) && StepRows(statement, read) && statement.Finalize(), statement);
    });
    // On a closed facade, all these operations fail at a check; only CloseReadTable() succeeds.
    list.Add("UseClosedFacade", Create<Facade>, {0, 1}, Facade, [](Subject& subject, DatabaseApi& facade) {
        return !facade.CreateTable(subject.definition) && !facade.DropTable("t") && !facade.AlterTable("t", "t") &&
               !facade.Execute("") && !facade.WriteTableValues("", subject.write) &&
               !facade.UpdateTableValues("t", subject.write, "") && !facade.ReadValues(BoundQuery, subject.data) &&
               !facade.SqlQueryBegin(BoundQuery) && !facade.ReadNextRow(subject.row) && facade.CloseReadTable();
    });

    list.Add("CreateTable", ArrangeDefinition, {40, 5}, Facade,
             [](Subject& subject, DatabaseApi& facade) { return facade.CreateTable(subject.definition); });
    list.Add("ExistsTable", OpenFacade, {.ofSqlite = 10, .ofNew = 2, .errorsOfSqlite = {{0, ""}}}, Facade,
             [](Subject& subject, DatabaseApi& facade) { return facade.ExistsTable("t", subject.result); });
    list.Add("DropTable", Warm<OpenFacade>,
             {.ofSqlite = 40, .ofNew = 4, .firstStep = "DELETE FROM room", .mayPassUndone = true}, Facade,
             [](Subject&, DatabaseApi& facade) { return facade.DropTable("room"); });
    const std::vector<AllowedError> alterErrors{
        {113, "No table exists: "}, {7, "unable to open a temporary database file for storing temporary tables"}};
    list.Add("AlterTable", Warm<OpenFacade>, {.ofSqlite = 40, .ofNew = 3, .errorsOfSqlite = alterErrors}, Facade,
             [](Subject& subject, DatabaseApi& facade) { // renames the table, and at the next call renames it back
                 const bool there = subject.timesDone % 2 == 0;
                 return facade.AlterTable(there ? "room" : "chamber", there ? "chamber" : "room");
             });
    AddCounting(list, "ExistData", "WHERE name <> 'nobody' AND length(name) > 1", 2, 0);
    AddCounting(list, "ExistDataFailing", "WHERE abs(-9223372036854775807 - 1)", 0, 1);

    AddRendering(list, "RenderColumnConstraints", 2,
                 [](const Definition& table) { return table.columns[0].ColumnConstraintsAsString(); });
    AddRendering(list, "RenderColumnDefinition", 3,
                 [](const Definition& table) { return table.columns[0].ColumnDefinitionAsString(); });
    AddRendering(list, "RenderForeignKey", 3,
                 [](const Definition& table) { return table.constraints.ForeignKeyConstraintAsString(); });
    AddRendering(list, "RenderTableConstraint", 4,
                 [](const Definition& table) { return table.TableConstraintAsString(); });
    list.Add("CopyDefinition", ArrangeLongDefinition, {0, 5}, [](Subject& subject) {
        const DbTableDefinition copy = subject.definition;
        return Report(copy.constraints.foreignKey == subject.definition.constraints.foreignKey, 0, "");
    });
}

} // namespace Morvik::sql::tests
