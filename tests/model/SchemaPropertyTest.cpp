#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include "support/AnyDefinition.h"
#include "support/ReferenceRendering.h"
#include "support/SqliteCallRecorder.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

TEST(SchemaPropertyTest, EveryDefinitionEqualsItsReferenceRendering)
{
    constexpr int DefinitionsPerSeed = 1000;
    DatabaseApi database;
    ASSERT_TRUE(database.OpenDatabase(":memory:", false));
    for (const std::uint64_t seed : TestSeeds()) {
        FuzzInput choices(seed);
        for (int i = 0; i < DefinitionsPerSeed; ++i) {
            SCOPED_TRACE(Describe(seed) + ", definition " + std::to_string(i));
            const DbTableDefinition definition = AnyDefinition(choices);
            const DbTableConstraints& constraints = definition.constraints;

            ASSERT_EQ(definition.TableConstraintAsString(), ReferenceTableConstraints(constraints));
            ASSERT_EQ(constraints.ForeignKeyConstraintAsString(), ReferenceForeignKey(constraints));
            for (const DbTableColumnDefinition& column : definition.columns) {
                ASSERT_EQ(column.ColumnConstraintsAsString(), ReferenceColumnConstraints(column));
                ASSERT_EQ(column.ColumnDefinitionAsString(), ReferenceColumn(column));
            }

            const SqliteCallRecorder recorded;
            database.CreateTable(definition);
            ASSERT_EQ(recorded.Executed(), std::vector<std::string>{ReferenceCreateStatement(definition)});
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
