#include <sql/DbTableColumnDefinition.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <ostream>
#include <string>
#include <type_traits>

namespace Morvik::sql::tests {

namespace {

static_assert(std::is_same_v<std::underlying_type_t<DbTableColumnConstraint>, std::uint32_t>);
static_assert(std::is_convertible_v<DbTableColumnConstraint, std::uint32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnDefinition::constraintFlags), std::uint32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnDefinition::constraintArguments),
                             std::map<DbTableColumnConstraint, std::string>>);

// Callers combine the flags without a cast.
constexpr std::uint32_t AllConstraints = PrimaryKey | Unique | NotNull | Check | Default;
static_assert(AllConstraints == 31);
static_assert(PrimaryKey == 1 && Unique == 2 && NotNull == 4 && Check == 8 && Default == 16);

const DbTableColumnType Integer = DbTableColumnType::Integer;
const DbTableColumnType Text = DbTableColumnType::Text;

DbTableColumnType Tag(std::int32_t value)
{
    return static_cast<DbTableColumnType>(value);
}

struct ColumnCase {
    const char* name;
    DbTableColumnDefinition column;
    const char* definition;

    friend void PrintTo(const ColumnCase& columnCase, std::ostream* stream) { *stream << columnCase.name; }
};

class DbTableColumnDefinitionCaseTest : public testing::TestWithParam<ColumnCase> {};

TEST_P(DbTableColumnDefinitionCaseTest, RendersNameTypeAndConstraints)
{
    EXPECT_EQ(GetParam().column.ColumnDefinitionAsString(), GetParam().definition);
}

const ColumnCase Columns[] = {
    {"KeyWithArgument",
     {"id", Integer, 0, PrimaryKey, {{PrimaryKey, "AUTOINCREMENT"}}},
     "id INTEGER PRIMARY KEY AUTOINCREMENT"},
    {"NoConstraint", {"label", Text}, "label TEXT "},
    {"DefaultNumber", {"qty", Integer, 0, NotNull | Default, {{Default, "0"}}}, "qty INTEGER NOT NULL DEFAULT 0"},
    {"NotNullBeforeUnique", {"code", Text, 0, Unique | NotNull}, "code TEXT NOT NULL UNIQUE"},
    {"CheckCarriesItsParentheses", {"age", Integer, 0, Check, {{Check, "(age >= 0)"}}}, "age INTEGER CHECK (age >= 0)"},
    {"NoTypeLeavesTwoBlanks", {"note", DbTableColumnType::Null, 0, Default, {{Default, "NULL"}}}, "note  DEFAULT NULL"},
    {"TimeWithoutConstraint", {"stamp", DbTableColumnType::UnixTimeNow}, "stamp INTEGER "},
    {"ExpressionAsDefault",
     {"created", DbTableColumnType::DateTimeNow, 0, Default, {{Default, "(datetime('now'))"}}},
     "created TEXT DEFAULT (datetime('now'))"},
    {"Nothing", {}, "  "},
    {"NoName", {"", Integer}, " INTEGER "},
    {"NoNameNoTypeButAKey", {"", DbTableColumnType::None, 0, PrimaryKey}, "  PRIMARY KEY"},
    {"NameIsNotQuoted", {"two \"words'", Text}, "two \"words' TEXT "},
    {"ArgumentIsNotWrapped", {"a", Text, 0, Check, {{Check, "it's \"x\""}}}, "a TEXT CHECK it's \"x\""},
    {"ArgumentKeepsItsBlanks", {"a", Text, 0, Default, {{Default, "  1 "}}}, "a TEXT DEFAULT   1 "},
};

INSTANTIATE_TEST_SUITE_P(Columns, DbTableColumnDefinitionCaseTest, testing::ValuesIn(Columns),
                         [](const auto& columnCase) { return columnCase.param.name; });

struct TypeCase {
    const char* name;
    DbTableColumnType type;
    const char* text;

    friend void PrintTo(const TypeCase& typeCase, std::ostream* stream) { *stream << typeCase.name; }
};

class DbTableColumnDefinitionTypeTest : public testing::TestWithParam<TypeCase> {};

TEST_P(DbTableColumnDefinitionTypeTest, DeclaresTheStorageTypeBetweenTwoBlanks)
{
    const DbTableColumnDefinition column{"c", GetParam().type};

    EXPECT_EQ(column.ColumnDefinitionAsString(), std::string("c ") + GetParam().text + " ");
}

INSTANTIATE_TEST_SUITE_P(Types, DbTableColumnDefinitionTypeTest,
                         testing::Values(TypeCase{"None", Tag(0), ""}, TypeCase{"Integer", Tag(1), "INTEGER"},
                                         TypeCase{"Real", Tag(2), "REAL"}, TypeCase{"Text", Tag(3), "TEXT"},
                                         TypeCase{"Blob", Tag(4), "BLOB"}, TypeCase{"Null", Tag(5), ""},
                                         TypeCase{"DateTimeNow", Tag(6), "TEXT"},
                                         TypeCase{"DateTimeNowLocalTime", Tag(7), "TEXT"},
                                         TypeCase{"UnixTimeNow", Tag(8), "INTEGER"},
                                         TypeCase{"JulianDayNow", Tag(9), "REAL"},
                                         TypeCase{"AboveTheLast", Tag(10), ""}, TypeCase{"Negative", Tag(-1), ""},
                                         TypeCase{"Largest", Tag(std::numeric_limits<std::int32_t>::max()), ""},
                                         TypeCase{"Smallest", Tag(std::numeric_limits<std::int32_t>::min()), ""}),
                         [](const auto& typeCase) { return typeCase.param.name; });

TEST(DbTableColumnDefinitionTest, DefaultDescribesAnUntypedColumnWithoutConstraints)
{
    const DbTableColumnDefinition column;

    EXPECT_EQ(column.name, "");
    EXPECT_EQ(column.type, DbTableColumnType::None);
    EXPECT_EQ(column.constraintFlags, 0U);
    EXPECT_EQ(column.reserved, 0);
    EXPECT_TRUE(column.constraintArguments.empty());
    EXPECT_EQ(column.ColumnConstraintsAsString(), "");
}

TEST(DbTableColumnDefinitionTest, ClauseIsEmptyWithoutFlagsWhateverArgumentsThereAre)
{
    const DbTableColumnDefinition column{"a", Text, 0, 0, {{Check, "(a > 0)"}, {Default, "1"}}};

    EXPECT_EQ(column.ColumnConstraintsAsString(), "");
}

TEST(DbTableColumnDefinitionTest, ClauseNamesAllConstraintsInAnOrderOfItsOwn)
{
    const DbTableColumnDefinition column{"a", Text, 0, AllConstraints};

    EXPECT_EQ(column.ColumnConstraintsAsString(), "PRIMARY KEY NOT NULL UNIQUE CHECK DEFAULT");
}

TEST(DbTableColumnDefinitionTest, EveryArgumentFollowsItsOwnKeyword)
{
    const DbTableColumnDefinition column{
        "a", Text, 0, AllConstraints, {{PrimaryKey, "p"}, {Unique, "u"}, {NotNull, "n"}, {Check, "c"}, {Default, "d"}}};

    EXPECT_EQ(column.ColumnConstraintsAsString(), "PRIMARY KEY p NOT NULL n UNIQUE u CHECK c DEFAULT d");
}

TEST(DbTableColumnDefinitionTest, ArgumentOfAnAbsentConstraintDoesNotAppear)
{
    const DbTableColumnDefinition column{"a", Text, 0, NotNull, {{Unique, "u"}, {Default, "d"}}};

    EXPECT_EQ(column.ColumnConstraintsAsString(), "NOT NULL");
}

TEST(DbTableColumnDefinitionTest, EmptyArgumentAddsNoBlank)
{
    const DbTableColumnDefinition column{"a", Text, 0, NotNull | Unique, {{NotNull, ""}, {Unique, ""}}};

    EXPECT_EQ(column.ColumnConstraintsAsString(), "NOT NULL UNIQUE");
}

TEST(DbTableColumnDefinitionTest, ArgumentOfCombinedConstraintsBelongsToNone)
{
    DbTableColumnDefinition column{"a", Text, 0, NotNull | Unique};
    column.constraintArguments[static_cast<DbTableColumnConstraint>(NotNull | Unique)] = "both";

    EXPECT_EQ(column.ColumnConstraintsAsString(), "NOT NULL UNIQUE");
}

TEST(DbTableColumnDefinitionTest, OtherBitsAreIgnored)
{
    DbTableColumnDefinition column{"a", Text, 0, ~AllConstraints};
    column.constraintArguments[static_cast<DbTableColumnConstraint>(32)] = "other";
    EXPECT_EQ(column.ColumnConstraintsAsString(), "");

    column.constraintFlags |= Check;
    EXPECT_EQ(column.ColumnConstraintsAsString(), "CHECK");
}

TEST(DbTableColumnDefinitionTest, RenderingLeavesTheDescriptionAsItWas)
{
    const DbTableColumnDefinition column{"a", Text, 0, Check | Default, {{Default, "1"}}};

    const std::string first = column.ColumnDefinitionAsString();

    EXPECT_EQ(column.ColumnDefinitionAsString(), first);
    EXPECT_EQ(column.constraintArguments.size(), 1U);
}

TEST(DbTableColumnDefinitionTest, CopyIsIndependentOfItsSource)
{
    const DbTableColumnDefinition column{"a", Text, 0, Default, {{Default, "1"}}};

    DbTableColumnDefinition copy = column;
    copy.name = "b";
    copy.constraintArguments[Default] = "2";

    EXPECT_EQ(column.ColumnDefinitionAsString(), "a TEXT DEFAULT 1");
    EXPECT_EQ(copy.ColumnDefinitionAsString(), "b TEXT DEFAULT 2");
}

} // namespace

} // namespace Morvik::sql::tests
