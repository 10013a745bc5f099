#include <ostream>
#include <string>

#include "api/FacadeTest.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// Names of tables are written as given, neither quoted nor escaped.

/// The name of an existing table that SQLite accepts only in quotes.
struct UnusualName {
    const char* test;
    std::string name;

    friend void PrintTo(const UnusualName& unusual, std::ostream* stream) { *stream << unusual.name; }
};

class UnusualTableNameTest : public FacadeTest, public testing::WithParamInterface<UnusualName> {
protected:
    UnusualTableNameTest()
    {
        RawSqlite(path).Execute("CREATE TABLE " + quoted + " (a); INSERT INTO " + quoted + " VALUES (1), (2)");
    }

    /// Checks after every test that the table exists and has its rows.
    void TearDown() override { EXPECT_THAT(RawRows("SELECT count(*) FROM " + quoted), ElementsAre(ElementsAre("2"))); }

    /// The result of raw SQLite for the query that tests whether the table exists.
    RawFailure TestOf(const std::string& table) const
    {
        return FailureOfPrepare(RawSqlite(path).Handle(), TableExistsQuery(table));
    }

    const std::string name = GetParam().name;
    const std::string quoted = '"' + name + '"';
    const RawFailure tested = TestOf(name);
};

TEST_P(UnusualTableNameTest, WithoutQuotesIsTestedUnchanged)
{
    EXPECT_EQ(database.ExistsTable(name, result), tested.code == 0);
    EXPECT_EQ(result, tested.code);
    EXPECT_THAT(database, HasErrorOf(tested));
}

TEST_P(UnusualTableNameTest, WithoutQuotesIsNotDropped)
{
    EXPECT_FALSE(database.DropTable(name));
    EXPECT_THAT(database, HasErrorOf(tested.code != 0 ? tested : RawRejection("DELETE FROM " + name)));
}

TEST_P(UnusualTableNameTest, WithoutQuotesIsNotRenamed)
{
    EXPECT_FALSE(database.AlterTable(name, "plain"));
    EXPECT_THAT(database, HasErrorOf(tested.code != 0 ? RawFailure{113, "No table exists: " + name}
                                                      : RawRejection("ALTER TABLE " + name + " RENAME TO plain")));
}

TEST_P(UnusualTableNameTest, WithoutQuotesIsNotCounted)
{
    const RawFailure failure = tested.code != 0 ? tested : RejectedQuery("SELECT count(*) FROM " + name);

    EXPECT_EQ(database.ExistData(name, "", result), 0);

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasErrorOf(failure));
}

TEST_P(UnusualTableNameTest, WithQuotesIsNotFoundByTheTableTest)
{
    const RawFailure failure = TestOf(quoted);

    EXPECT_FALSE(database.ExistsTable(quoted, result));
    EXPECT_EQ(result, failure.code);
    EXPECT_EQ(database.DropTable(quoted), failure.code == 0);
    EXPECT_EQ(database.ExistData(quoted, "", result), 0);
    EXPECT_EQ(result, failure.code);
    EXPECT_FALSE(database.AlterTable(quoted, "plain"));
    EXPECT_THAT(database, HasError(113, "No table exists: " + quoted));
}

TEST_P(UnusualTableNameTest, WithQuotesCanBeCreatedAndRenamedTo)
{
    EXPECT_TRUE(database.CreateTable({quoted, {{"b"}}, {}}));
    ASSERT_TRUE(database.Execute("ALTER TABLE " + quoted + " RENAME TO plain"));
    EXPECT_TRUE(database.AlterTable("plain", quoted));
}

INSTANTIATE_TEST_SUITE_P(Names, UnusualTableNameTest,
                         testing::Values(UnusualName{"Blank", "two words"}, UnusualName{"Keyword", "order"},
                                         UnusualName{"Apostrophe", "it's"}, UnusualName{"LeadingDigit", "2nd"},
                                         UnusualName{"Hyphen", "a-b"}, UnusualName{"Parenthesis", "a("},
                                         UnusualName{"Apostrophes", "'a'"}),
                         [](const auto& unusual) { return unusual.param.test; });

using TableNameTest = FacadeTest;

TEST_F(TableNameTest, NameWithItsSchemaIsNotFound)
{
    EXPECT_FALSE(database.ExistsTable("main.other", result));
    EXPECT_EQ(database.ExistData("main.other", "", result), 0);
    EXPECT_TRUE(database.DropTable("main.other"));

    EXPECT_THAT(RawRows("SELECT a FROM other"), ElementsAre(ElementsAre("1"), ElementsAre("2")));
}

} // namespace

} // namespace Morvik::sql::tests
