#include <sql/DatabaseApi.h>
#include <sql/DbTableDefinition.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/AnyDefinition.h"
#include "support/FuzzInput.h"
#include "support/PlainRendering.h"
#include "support/SqliteCallRecorder.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

constexpr int DefinitionsPerSeed = 500;

TEST(SchemaPropertyTest, EveryDescriptionReadsAsThePlainRenderingOfIt)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);

        for (int i = 0; i < DefinitionsPerSeed; ++i) {
            const DbTableDefinition definition = AnyDefinition(choices);

            ASSERT_EQ(definition.TableConstraintAsString(), PlainTableConstraints(definition.constraints)) << i;
            ASSERT_EQ(definition.constraints.ForeignKeyConstraintAsString(), PlainForeignKey(definition.constraints))
                << i;
            for (const DbTableColumnDefinition& column : definition.columns) {
                ASSERT_EQ(column.ColumnConstraintsAsString(), PlainColumnConstraints(column)) << i;
                ASSERT_EQ(column.ColumnDefinitionAsString(), PlainColumn(column)) << i;
            }
        }
    }
}

TEST(SchemaPropertyTest, EveryStatementReadsAsThePlainRenderingOfItsDefinition)
{
    DatabaseApi database;
    ASSERT_TRUE(database.OpenDatabase(":memory:", false));
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);

        for (int i = 0; i < DefinitionsPerSeed; ++i) {
            const DbTableDefinition definition = AnyDefinition(choices);
            const SqliteCallRecorder recorded;

            database.CreateTable(definition);

            ASSERT_EQ(recorded.Executed(), std::vector<std::string>{PlainCreateStatement(definition)}) << i;
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
