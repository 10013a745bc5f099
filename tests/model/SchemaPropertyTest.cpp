#include <sql/DatabaseApi.h>
#include <sql/DbTableDefinition.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/Choices.h"
#include "support/PlainRendering.h"
#include "support/RecordedSqlite.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

constexpr int DefinitionsPerSeed = 500;

// No zero byte: a statement ends there in SQLite's eyes.
constexpr std::string_view NameCharacters = "abcz_ '\",();\n\xC3\xA4";

std::string RandomName(Choices& choices)
{
    return choices.OneIn(8) ? std::string() : choices.TextOf(NameCharacters, 12);
}

DbTableColumnDefinition RandomColumn(Choices& choices)
{
    DbTableColumnDefinition column;
    column.name = RandomName(choices);
    column.type = static_cast<DbTableColumnType>(choices.OneIn(20) ? static_cast<std::int32_t>(choices.Bits())
                                                                   : static_cast<std::int32_t>(choices.Below(14)) - 2);
    column.reserved = static_cast<std::int32_t>(choices.Bits());
    column.constraintFlags = choices.OneIn(4) ? choices.Bits() : choices.Bits() % 32;
    for (std::size_t left = choices.Below(7); left > 0; --left) {
        column.constraintArguments[static_cast<DbTableColumnConstraint>(1U << choices.Below(7))] = RandomName(choices);
    }
    return column;
}

std::vector<char> RandomKey(Choices& choices)
{
    std::vector<char> key(choices.OneIn(2) ? 0 : choices.Below(4));
    for (char& column : key) {
        column = static_cast<char>(1 + choices.Below(255));
    }
    return key;
}

DbTableDefinition RandomDefinition(Choices& choices)
{
    DbTableDefinition definition;
    definition.name = "t" + RandomName(choices);
    for (std::size_t left = choices.Below(5); left > 0; --left) {
        definition.columns.push_back(RandomColumn(choices));
    }
    definition.constraints.primaryKey = RandomKey(choices);
    definition.constraints.unique = RandomKey(choices);
    definition.constraints.referenceTable = choices.OneIn(2) ? std::string() : RandomName(choices);
    for (std::size_t left = choices.OneIn(2) ? 0 : choices.Below(4); left > 0; --left) {
        definition.constraints.foreignKey.push_back(RandomName(choices));
    }
    return definition;
}

TEST(SchemaPropertyTest, EveryDescriptionReadsAsThePlainRenderingOfIt)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        Choices choices(seed);

        for (int i = 0; i < DefinitionsPerSeed; ++i) {
            const DbTableDefinition definition = RandomDefinition(choices);

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
        Choices choices(seed);

        for (int i = 0; i < DefinitionsPerSeed; ++i) {
            const DbTableDefinition definition = RandomDefinition(choices);
            const RecordedSqlite recorded;

            database.CreateTable(definition);

            ASSERT_EQ(recorded.Executed(), std::vector<std::string>{PlainCreateStatement(definition)}) << i;
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
