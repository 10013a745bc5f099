#include <sql/DbTableConstraints.h>

#include <type_traits>

#include <gtest/gtest.h>

namespace Morvik::sql::tests {

namespace {

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

} // namespace

} // namespace Morvik::sql::tests
