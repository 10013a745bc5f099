#include <sql/DatabaseApi.h>
#include <sql/DbTableDefinition.h>

#include <type_traits>

#include <gtest/gtest.h>

#include "support/AnyDefinition.h"
#include "support/ReferenceRendering.h"
#include "support/SqliteCallRecorder.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;

static_assert(std::is_same_v<decltype(DbTableDefinition::columns), std::vector<DbTableColumnDefinition>>);
static_assert(std::is_same_v<decltype(DbTableDefinition::constraints), DbTableConstraints>);
static_assert(std::is_same_v<decltype(DbTableConstraints::primaryKey), std::vector<char>>);
static_assert(std::is_same_v<decltype(DbTableConstraints::unique), std::vector<char>>);
static_assert(std::is_same_v<decltype(DbTableConstraints::foreignKey), std::vector<std::string>>);

TEST(DbTableConstraintsTest, ForeignKeyClauseEndsInAnExtraParenthesis)
{
    const struct {
        const char* referenceTable;
        std::vector<std::string> foreignKey;
        const char* clause;
    } cases[] = {
        {"owner", {"owner_id"}, "FOREIGN KEY (owner_id) REFERENCES owner(owner_id) ON DELETE SET NULL )"},
        {"t", {"p", "q"}, "FOREIGN KEY (p,q) REFERENCES t(p,q) ON DELETE SET NULL )"},
        {"", {"x"}, "FOREIGN KEY (x) )"},
        {"", {}, " )"},
        {"owner", {}, " )"},
    };
    for (const auto& [referenceTable, foreignKey, clause] : cases) {
        const DbTableConstraints alone{{}, {}, referenceTable, foreignKey};
        const DbTableConstraints besideOtherKeys{{'a', 'b'}, {'c'}, referenceTable, foreignKey};

        EXPECT_EQ(alone.ForeignKeyConstraintAsString(), clause);
        EXPECT_EQ(besideOtherKeys.ForeignKeyConstraintAsString(), clause);
    }
}

TEST(DbTableDefinitionTest, ConstraintListHasPrimaryKeyUniqueKeyAndForeignKey)
{
    const struct {
        const char* name;
        DbTableConstraints constraints;
        std::string list;
    } cases[] = {
        {"primary key", {{'a', 'b'}, {}, "", {}}, "PRIMARY KEY (a,b) ON CONFLICT IGNORE"},
        {"primary key of one column", {{'a'}, {}, "", {}}, "PRIMARY KEY (a) ON CONFLICT IGNORE"},
        {"unique key", {{}, {'c'}, "", {}}, "UNIQUE (c) ON CONFLICT IGNORE"},
        {"both keys",
         {{'a'}, {'c', 'd'}, "", {}},
         "PRIMARY KEY (a) ON CONFLICT IGNORE,UNIQUE (c,d) ON CONFLICT IGNORE"},
        {"foreign key",
         {{}, {}, "owner", {"owner_id"}},
         "FOREIGN KEY (owner_id) REFERENCES owner(owner_id) ON DELETE SET NULL )"},
        {"primary key, foreign key without a table",
         {{'a'}, {}, "", {"x", "y"}},
         "PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY (x,y) )"},
        {"unique key, foreign key without a table",
         {{}, {'c'}, "", {"x"}},
         "UNIQUE (c) ON CONFLICT IGNORE,FOREIGN KEY (x) )"},
        {"all three",
         {{'a'}, {'c'}, "t", {"p", "q"}},
         "PRIMARY KEY (a) ON CONFLICT IGNORE,UNIQUE (c) ON CONFLICT IGNORE,"
         "FOREIGN KEY (p,q) REFERENCES t(p,q) ON DELETE SET NULL )"},
        {"only a foreign key without a table", {{}, {}, "", {"x"}}, ""},
        {"only a referenced table", {{}, {}, "owner", {}}, ""},
        {"both keys, referenced table without a foreign key",
         {{'a'}, {'c'}, "owner", {}},
         "PRIMARY KEY (a) ON CONFLICT IGNORE,UNIQUE (c) ON CONFLICT IGNORE"},
        {"nothing", {}, ""},
        {"bytes beyond ASCII", {{}, {'\xE9', '\xFF'}, "", {}}, "UNIQUE (\xE9,\xFF) ON CONFLICT IGNORE"},
        {"zero byte", {{'\0', 'a'}, {}, "", {}}, "PRIMARY KEY (\0,a) ON CONFLICT IGNORE"s},
    };
    for (const auto& [name, constraints, list] : cases) {
        const DbTableDefinition alone{"", {}, constraints};
        const DbTableDefinition withColumns{
            "sensor_log", {{"a", DbTableColumnType::Integer, 0, PrimaryKey | Unique}}, constraints};

        EXPECT_EQ(alone.TableConstraintAsString(), list) << name;
        EXPECT_EQ(withColumns.TableConstraintAsString(), list) << name;
    }
}

TEST(DbTableDefinitionTest, EveryDefinitionEqualsItsReferenceRendering)
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
