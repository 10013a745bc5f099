#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

void ArrangeDefinition(Subject& subject)
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

Report Rendered(bool done)
{
    return {done, 0, ""};
}

Report ColumnConstraints(Subject& subject)
{
    subject.text = subject.definition.columns.front().ColumnConstraintsAsString();
    return Rendered(true);
}

Report ColumnDefinition(Subject& subject)
{
    subject.text = subject.definition.columns.front().ColumnDefinitionAsString();
    return Rendered(true);
}

Report ForeignKey(Subject& subject)
{
    subject.text = subject.definition.constraints.ForeignKeyConstraintAsString();
    return Rendered(true);
}

Report TableConstraint(Subject& subject)
{
    subject.text = subject.definition.TableConstraintAsString();
    return Rendered(true);
}

Report CopyDefinition(Subject& subject)
{
    const DbTableDefinition copy = subject.definition;
    return Rendered(copy.constraints.foreignKey == subject.definition.constraints.foreignKey);
}

} // namespace

std::vector<Scenario> RenderingScenarios()
{
    return {
        {.name = "RenderColumnConstraints", .arrange = ArrangeDefinition, .act = ColumnConstraints, .least = {0, 2}},
        {.name = "RenderColumnDefinition", .arrange = ArrangeDefinition, .act = ColumnDefinition, .least = {0, 3}},
        {.name = "RenderForeignKey", .arrange = ArrangeDefinition, .act = ForeignKey, .least = {0, 3}},
        {.name = "RenderTableConstraint", .arrange = ArrangeDefinition, .act = TableConstraint, .least = {0, 4}},
        {.name = "CopyDefinition", .arrange = ArrangeDefinition, .act = CopyDefinition, .least = {0, 5}},
    };
}

} // namespace Morvik::sql::tests
