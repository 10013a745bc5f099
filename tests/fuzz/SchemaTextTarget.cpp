// For any table definition, the library's text must equal that of the reference rendering, and creating the table must
// have the same outcome as with the reference implementation.

#include <span>
#include <string>
#include <vector>

#include "fuzz/ComparedFacades.h"
#include "fuzz/FuzzTarget.h"
#include "support/AnyDefinition.h"
#include "support/ReferenceRendering.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

void RequireReferenceTexts(const DbTableDefinition& definition)
{
    RequireSame("The table's constraints", definition.TableConstraintAsString(),
                ReferenceTableConstraints(definition.constraints));
    RequireSame("The foreign key", definition.constraints.ForeignKeyConstraintAsString(),
                ReferenceForeignKey(definition.constraints));
    for (const DbTableColumnDefinition& column : definition.columns) {
        RequireSame("The column's constraints", column.ColumnConstraintsAsString(), ReferenceColumnConstraints(column));
        RequireSame("The column", column.ColumnDefinitionAsString(), ReferenceColumn(column));
    }
}

void RequireReferenceTable(const DbTableDefinition& definition)
{
    ComparedFacades facades;
    facades.Both([](auto& side) { return side.Open(":memory:", false); });
    facades.Both([&](auto& side) {
        const SqliteCallRecorder recorded;
        StepOutcome created = side.Create(definition);
        const std::vector<std::string> executed = recorded.Executed();
        RequireSame("The number of statements", std::to_string(executed.size()), "1");
        RequireSame("The statement", executed.front(), ReferenceCreateStatement(definition));
        return created;
    });
    facades.Both([](auto& side) { return side.Read("SELECT * FROM sqlite_master"); });
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Morvik::sql::tests;
    FuzzInput choices(std::span(data, size));
    const Morvik::sql::DbTableDefinition definition = AnyDefinition(choices);
    RequireReferenceTexts(definition);
    RequireReferenceTable(definition);
    return 0;
}
