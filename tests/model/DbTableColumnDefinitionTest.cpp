#include <sql/DbTableColumnDefinition.h>

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

namespace Morvik::sql::tests {

namespace {

using Arguments = std::map<DbTableColumnConstraint, std::string>;

static_assert(std::is_convertible_v<DbTableColumnConstraint, std::uint32_t>);
static_assert(std::is_same_v<decltype(DbTableColumnDefinition::constraintArguments), Arguments>);

// Callers combine the flags without a cast.
constexpr std::uint32_t AllConstraints = PrimaryKey | Unique | NotNull | Check | Default;
static_assert(AllConstraints == 31);
static_assert(PrimaryKey == 1 && Unique == 2 && NotNull == 4 && Check == 8 && Default == 16);

TEST(DbTableColumnDefinitionTest, StartsUntypedAndWithoutConstraints)
{
    const DbTableColumnDefinition column;

    EXPECT_EQ(column.name, "");
    EXPECT_EQ(column.type, DbTableColumnType::None);
    EXPECT_EQ(column.constraintFlags, 0U);
    EXPECT_EQ(column.reserved, 0);
    EXPECT_TRUE(column.constraintArguments.empty());
    EXPECT_EQ(column.ColumnDefinitionAsString(), "  ");
}

TEST(DbTableColumnDefinitionTest, DefinitionHasNameTypeAndConstraints)
{
    using enum DbTableColumnType;
    const struct {
        DbTableColumnDefinition column;
        const char* definition;
    } cases[] = {
        {{"id", Integer, 0, PrimaryKey, {{PrimaryKey, "AUTOINCREMENT"}}}, "id INTEGER PRIMARY KEY AUTOINCREMENT"},
        {{"label", Text}, "label TEXT "},
        {{"qty", Integer, 0, NotNull | Default, {{Default, "0"}}}, "qty INTEGER NOT NULL DEFAULT 0"},
        {{"code", Text, 0, Unique | NotNull}, "code TEXT NOT NULL UNIQUE"},
        {{"age", Integer, 0, Check, {{Check, "(age >= 0)"}}}, "age INTEGER CHECK (age >= 0)"},
        {{"note", Null, 0, Default, {{Default, "NULL"}}}, "note  DEFAULT NULL"},
        {{"stamp", UnixTimeNow}, "stamp INTEGER "},
        {{"created", DateTimeNow, 0, Default, {{Default, "(datetime('now'))"}}},
         "created TEXT DEFAULT (datetime('now'))"},
        {{"", Integer}, " INTEGER "},
    };
    for (const auto& [column, definition] : cases) {
        EXPECT_EQ(column.ColumnDefinitionAsString(), definition);
    }
}

TEST(DbTableColumnDefinitionTest, TypeIsTheStorageTypeBetweenTwoBlanks)
{
    const struct {
        std::int32_t type;
        const char* text;
    } cases[] = {{0, ""},     {1, "INTEGER"}, {2, "REAL"}, {3, "TEXT"}, {4, "BLOB"}, {5, ""},         {6, "TEXT"},
                 {7, "TEXT"}, {8, "INTEGER"}, {9, "REAL"}, {10, ""},    {-1, ""},    {INT32_MAX, ""}, {INT32_MIN, ""}};
    for (const auto& [type, text] : cases) {
        const DbTableColumnDefinition column{"c", static_cast<DbTableColumnType>(type)};

        EXPECT_EQ(column.ColumnDefinitionAsString(), std::string("c ") + text + " ") << type;
    }
}

TEST(DbTableColumnDefinitionTest, ClauseHasTheFlaggedConstraintsInFixedOrder)
{
    using enum DbTableColumnType;
    constexpr auto both = static_cast<DbTableColumnConstraint>(NotNull | Unique);
    constexpr auto other = static_cast<DbTableColumnConstraint>(32);
    const struct {
        const char* name;
        std::uint32_t flags;
        Arguments arguments;
        const char* clause;
    } cases[] = {
        {"no flags", 0, {{Check, "(a > 0)"}, {Default, "1"}}, ""},
        {"all flags", AllConstraints, {}, "PRIMARY KEY NOT NULL UNIQUE CHECK DEFAULT"},
        {"arguments of clear flags", NotNull, {{Unique, "u"}, {Default, "d"}}, "NOT NULL"},
        {"empty arguments", NotNull | Unique, {{NotNull, ""}, {Unique, ""}}, "NOT NULL UNIQUE"},
        {"an argument of two flags", NotNull | Unique, {{both, "both"}}, "NOT NULL UNIQUE"},
        {"unknown flags", ~AllConstraints | Check, {{other, "other"}}, "CHECK"},
    };
    for (const auto& [name, flags, arguments, clause] : cases) {
        const DbTableColumnDefinition column{"a", Text, 0, flags, arguments};

        EXPECT_EQ(column.ColumnConstraintsAsString(), clause) << name;
    }
}

} // namespace

} // namespace Morvik::sql::tests
