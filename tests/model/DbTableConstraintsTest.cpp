#include <sql/DbTableConstraints.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace Morvik::sql::tests {

namespace {

static_assert(std::is_same_v<decltype(DbTableConstraints::primaryKey), std::vector<char>>);
static_assert(std::is_same_v<decltype(DbTableConstraints::unique), std::vector<char>>);
static_assert(std::is_same_v<decltype(DbTableConstraints::foreignKey), std::vector<std::string>>);

TEST(DbTableConstraintsTest, StartsWithoutAny)
{
    const DbTableConstraints constraints;

    EXPECT_TRUE(constraints.primaryKey.empty());
    EXPECT_TRUE(constraints.unique.empty());
    EXPECT_EQ(constraints.referenceTable, "");
    EXPECT_TRUE(constraints.foreignKey.empty());
}

struct ForeignKeyCase {
    const char* name;
    std::string referenceTable;
    std::vector<std::string> foreignKey;
    const char* clause;

    friend void PrintTo(const ForeignKeyCase& keyCase, std::ostream* stream) { *stream << keyCase.name; }
};

class ForeignKeyClauseTest : public testing::TestWithParam<ForeignKeyCase> {};

TEST_P(ForeignKeyClauseTest, EndsInAParenthesisThatClosesNothing)
{
    const DbTableConstraints constraints{{}, {}, GetParam().referenceTable, GetParam().foreignKey};

    EXPECT_EQ(constraints.ForeignKeyConstraintAsString(), GetParam().clause);
}

TEST_P(ForeignKeyClauseTest, IsNotTouchedByTheOtherKeys)
{
    const DbTableConstraints constraints{{'a', 'b'}, {'c'}, GetParam().referenceTable, GetParam().foreignKey};

    EXPECT_EQ(constraints.ForeignKeyConstraintAsString(), GetParam().clause);
}

INSTANTIATE_TEST_SUITE_P(
    Clauses, ForeignKeyClauseTest,
    testing::Values(
        ForeignKeyCase{"OneColumn",
                       "owner",
                       {"owner_id"},
                       "FOREIGN KEY (owner_id) REFERENCES owner(owner_id) ON DELETE SET NULL )"},
        ForeignKeyCase{"SeveralColumns", "t", {"p", "q"}, "FOREIGN KEY (p,q) REFERENCES t(p,q) ON DELETE SET NULL )"},
        ForeignKeyCase{"NoReferencedTable", "", {"x"}, "FOREIGN KEY (x) )"},
        ForeignKeyCase{"NoReferencedTableSeveralColumns", "", {"x", "y", "z"}, "FOREIGN KEY (x,y,z) )"},
        ForeignKeyCase{"Nothing", "", {}, " )"}, ForeignKeyCase{"NoColumns", "owner", {}, " )"},
        ForeignKeyCase{"OneEmptyColumn", "", {""}, "FOREIGN KEY () )"},
        ForeignKeyCase{"EmptyColumnsLeaveEmptyPlaces",
                       "t",
                       {"", "a", ""},
                       "FOREIGN KEY (,a,) REFERENCES t(,a,) ON DELETE SET NULL )"},
        ForeignKeyCase{"NamesAreNotQuoted",
                       "the \"owner's\" table",
                       {"a b", "c,d"},
                       "FOREIGN KEY (a b,c,d) REFERENCES the \"owner's\" table(a b,c,d) ON DELETE SET NULL )"}),
    [](const auto& keyCase) { return keyCase.param.name; });

TEST(DbTableConstraintsTest, RenderingLeavesTheConstraintsAsTheyWere)
{
    const DbTableConstraints constraints{{}, {}, "owner", {"a", "b"}};

    const std::string first = constraints.ForeignKeyConstraintAsString();

    EXPECT_EQ(constraints.ForeignKeyConstraintAsString(), first);
    EXPECT_EQ(constraints.foreignKey, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(constraints.referenceTable, "owner");
}

} // namespace

} // namespace Morvik::sql::tests
