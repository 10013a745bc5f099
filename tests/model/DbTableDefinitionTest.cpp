#include <sql/DbTableDefinition.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

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

struct ConstraintsCase {
    const char* name;
    DbTableConstraints constraints;
    const char* list;

    friend void PrintTo(const ConstraintsCase& constraintsCase, std::ostream* stream)
    {
        *stream << constraintsCase.name;
    }
};

class TableConstraintListTest : public testing::TestWithParam<ConstraintsCase> {};

TEST_P(TableConstraintListTest, NamesPrimaryKeyUniqueKeyAndForeignKey)
{
    const DbTableDefinition definition{"", {}, GetParam().constraints};

    EXPECT_EQ(definition.TableConstraintAsString(), GetParam().list);
}

TEST_P(TableConstraintListTest, ReadsNothingButTheConstraints)
{
    const DbTableDefinition definition{
        "sensor_log", {{"a", DbTableColumnType::Integer, 0, PrimaryKey | Unique}}, GetParam().constraints};

    EXPECT_EQ(definition.TableConstraintAsString(), GetParam().list);
}

const ConstraintsCase Lists[] = {
    {"PrimaryKey", {{'a', 'b'}, {}, "", {}}, "PRIMARY KEY (a,b) ON CONFLICT IGNORE"},
    {"PrimaryKeyOfOneColumn", {{'a'}, {}, "", {}}, "PRIMARY KEY (a) ON CONFLICT IGNORE"},
    {"Unique", {{}, {'c'}, "", {}}, "UNIQUE (c) ON CONFLICT IGNORE"},
    {"UniqueOfThreeColumns", {{}, {'c', 'd', 'e'}, "", {}}, "UNIQUE (c,d,e) ON CONFLICT IGNORE"},
    {"BothKeys", {{'a'}, {'c', 'd'}, "", {}}, "PRIMARY KEY (a) ON CONFLICT IGNORE,UNIQUE (c,d) ON CONFLICT IGNORE"},
    {"ForeignKey",
     {{}, {}, "owner", {"owner_id"}},
     "FOREIGN KEY (owner_id) REFERENCES owner(owner_id) ON DELETE SET NULL )"},
    {"PrimaryKeyAndUnreferencedForeignKey",
     {{'a'}, {}, "", {"x", "y"}},
     "PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY (x,y) )"},
    {"UniqueAndUnreferencedForeignKey", {{}, {'c'}, "", {"x"}}, "UNIQUE (c) ON CONFLICT IGNORE,FOREIGN KEY (x) )"},
    {"PrimaryKeyAndForeignKey",
     {{'a'}, {}, "t", {"x"}},
     "PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY (x) REFERENCES t(x) ON DELETE SET NULL )"},
    {"UniqueAndForeignKey",
     {{}, {'c'}, "t", {"x"}},
     "UNIQUE (c) ON CONFLICT IGNORE,FOREIGN KEY (x) REFERENCES t(x) ON DELETE SET NULL )"},
    {"AllThree",
     {{'a'}, {'c'}, "t", {"p", "q"}},
     "PRIMARY KEY (a) ON CONFLICT IGNORE,UNIQUE (c) ON CONFLICT IGNORE,"
     "FOREIGN KEY (p,q) REFERENCES t(p,q) ON DELETE SET NULL )"},
    {"UnreferencedForeignKeyAloneIsDropped", {{}, {}, "", {"x"}}, ""},
    {"ReferencedTableAloneIsDropped", {{}, {}, "owner", {}}, ""},
    {"ReferencedTableWithoutForeignKeyAddsNothing",
     {{'a'}, {'c'}, "owner", {}},
     "PRIMARY KEY (a) ON CONFLICT IGNORE,UNIQUE (c) ON CONFLICT IGNORE"},
    {"Nothing", {}, ""},
    {"EmptyNameIsAForeignKeyStill", {{'a'}, {}, "", {""}}, "PRIMARY KEY (a) ON CONFLICT IGNORE,FOREIGN KEY () )"},
    {"DigitsAndSignsAreCharacters", {{'1', ',', '\''}, {}, "", {}}, "PRIMARY KEY (1,,,') ON CONFLICT IGNORE"},
    {"BytesBeyondAsciiAreCharacters", {{}, {'\xE9', '\xFF'}, "", {}}, "UNIQUE (\xE9,\xFF) ON CONFLICT IGNORE"},
};

INSTANTIATE_TEST_SUITE_P(Lists, TableConstraintListTest, testing::ValuesIn(Lists),
                         [](const auto& constraintsCase) { return constraintsCase.param.name; });

TEST(DbTableDefinitionTest, KeyColumnOfAZeroByteIsWrittenAsThatByte)
{
    const DbTableDefinition definition{"", {}, {{'\0', 'a'}, {}, "", {}}};

    EXPECT_EQ(definition.TableConstraintAsString(), "PRIMARY KEY (\0,a) ON CONFLICT IGNORE"s);
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
