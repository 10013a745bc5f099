#include <sql/DbTableDefinition.h>

#include <type_traits>

#include <gtest/gtest.h>

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;

static_assert(std::is_same_v<decltype(DbTableDefinition::columns), std::vector<DbTableColumnDefinition>>);
static_assert(std::is_same_v<decltype(DbTableDefinition::constraints), DbTableConstraints>);

TEST(DbTableDefinitionTest, StartsEmpty)
{
    const DbTableDefinition definition;

    EXPECT_EQ(definition.name, "");
    EXPECT_TRUE(definition.columns.empty());
    EXPECT_EQ(definition.TableConstraintAsString(), "");
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
        {"unique key of three columns", {{}, {'c', 'd', 'e'}, "", {}}, "UNIQUE (c,d,e) ON CONFLICT IGNORE"},
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
        {"primary key, foreign key",
         {{'a'}, {}, "t", {"x"}},
         "PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY (x) REFERENCES t(x) ON DELETE SET NULL )"},
        {"unique key, foreign key",
         {{}, {'c'}, "t", {"x"}},
         "UNIQUE (c) ON CONFLICT IGNORE,FOREIGN KEY (x) REFERENCES t(x) ON DELETE SET NULL )"},
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
        {"foreign key with an empty name",
         {{'a'}, {}, "", {""}},
         "PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY () )"},
        {"digits and signs", {{'1', ',', '\''}, {}, "", {}}, "PRIMARY KEY (1,,,') ON CONFLICT IGNORE"},
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

TEST(DbTableDefinitionTest, CopyIsIndependentOfItsSource)
{
    const DbTableDefinition definition{"t", {{"a", DbTableColumnType::Text}}, {{'a'}, {}, "", {}}};

    DbTableDefinition copy = definition;
    copy.name = "u";
    copy.columns[0].name = "b";
    copy.constraints.primaryKey[0] = 'b';

    EXPECT_EQ(definition.name, "t");
    EXPECT_EQ(definition.columns[0].name, "a");
    EXPECT_EQ(definition.TableConstraintAsString(), "PRIMARY KEY (a) ON CONFLICT IGNORE");
    EXPECT_EQ(copy.TableConstraintAsString(), "PRIMARY KEY (b) ON CONFLICT IGNORE");
}

} // namespace

} // namespace Morvik::sql::tests
