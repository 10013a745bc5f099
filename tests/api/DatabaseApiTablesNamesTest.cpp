#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/HasError.h"
#include "support/OpenFacade.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"
#include "support/TableExistsQuery.h"

namespace Morvik::sql::tests {

namespace {

constexpr int UnwrittenResult = -77;

// The name of an existing table that SQLite accepts only in quotes.
struct AwkwardName {
    const char* test;
    std::string name;

    std::string Quoted() const { return '"' + name + '"'; }

    friend void PrintTo(const AwkwardName& awkward, std::ostream* stream) { *stream << awkward.name; }
};

class AwkwardTableNameTest : public OpenFacade, public testing::WithParamInterface<AwkwardName> {
protected:
    AwkwardTableNameTest()
    {
        RawSqlite(path).Execute("CREATE TABLE " + quoted + " (a); INSERT INTO " + quoted + " VALUES (1), (2)");
    }

    void ExpectTheTableWithItsRows() const
    {
        EXPECT_EQ(PlainRows("SELECT count(*) FROM " + quoted), (std::vector<std::vector<std::string>>{{"2"}}));
    }

    RawFailure RawPrepare(const std::string& sql) const { return FailureOfPrepare(RawSqlite(path).Handle(), sql); }

    const std::string name = GetParam().name;
    const std::string quoted = GetParam().Quoted();
    int result = UnwrittenResult;
};

TEST_P(AwkwardTableNameTest, UnquotedIsTestedAsItStands)
{
    const RawFailure failure = RawPrepare(TableExistsQuery(name));

    EXPECT_EQ(database.ExistsTable(name, result), failure.code == 0);

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

TEST_P(AwkwardTableNameTest, UnquotedIsNotDroppedBecauseSqliteRejectsIt)
{
    const RawFailure tested = RawPrepare(TableExistsQuery(name));
    const RawFailure failure = tested.code != 0 ? tested : PlainRejection("DELETE FROM " + name);

    EXPECT_FALSE(database.DropTable(name));

    EXPECT_THAT(database, HasError(failure.code, failure.message));
    ExpectTheTableWithItsRows();
}

TEST_P(AwkwardTableNameTest, UnquotedIsNotRenamed)
{
    const RawFailure tested = RawPrepare(TableExistsQuery(name));
    const RawFailure failure = tested.code != 0 ? RawFailure{113, "No table exists: " + name}
                                                : PlainRejection("ALTER TABLE " + name + " RENAME TO plain");

    EXPECT_FALSE(database.AlterTable(name, "plain"));

    EXPECT_THAT(database, HasError(failure.code, failure.message));
    ExpectTheTableWithItsRows();
}

TEST_P(AwkwardTableNameTest, UnquotedIsNotCounted)
{
    const RawFailure tested = RawPrepare(TableExistsQuery(name));
    const RawFailure failure = tested.code != 0 ? tested : RawPrepare("SELECT count(*) FROM " + name);
    ASSERT_NE(failure.code, 0);

    EXPECT_EQ(database.ExistData(name, "", result), 0);

    EXPECT_EQ(result, failure.code);
    EXPECT_THAT(database, HasError(failure.code, failure.message));
}

TEST_P(AwkwardTableNameTest, QuotedByTheCallerIsNotFoundBecauseTheTestComparesTheQuotesToo)
{
    const RawFailure failure = RawPrepare(TableExistsQuery(quoted));

    EXPECT_FALSE(database.ExistsTable(quoted, result));
    EXPECT_EQ(result, failure.code);
    EXPECT_EQ(database.DropTable(quoted), failure.code == 0);
    EXPECT_EQ(database.ExistData(quoted, "", result), 0);
    EXPECT_EQ(result, failure.code);
    EXPECT_FALSE(database.AlterTable(quoted, "plain"));

    EXPECT_THAT(database, HasError(113, "No table exists: " + quoted));
    ExpectTheTableWithItsRows();
}

TEST_P(AwkwardTableNameTest, QuotedByTheCallerIsFoundByCreateTable)
{
    EXPECT_TRUE(database.CreateTable({quoted, {{"b"}}, {}}));

    ExpectTheTableWithItsRows();
}

TEST_P(AwkwardTableNameTest, QuotedByTheCallerIsTakenAsANewName)
{
    ASSERT_TRUE(database.Execute("ALTER TABLE " + quoted + " RENAME TO plain"));

    EXPECT_TRUE(database.AlterTable("plain", quoted));

    ExpectTheTableWithItsRows();
}

INSTANTIATE_TEST_SUITE_P(Names, AwkwardTableNameTest,
                         testing::Values(AwkwardName{"Blank", "two words"}, AwkwardName{"Keyword", "order"},
                                         AwkwardName{"Apostrophe", "it's"}, AwkwardName{"LeadingDigit", "2nd"},
                                         AwkwardName{"Hyphen", "a-b"}, AwkwardName{"Parenthesis", "a("},
                                         AwkwardName{"Apostrophes", "'a'"}),
                         [](const auto& awkward) { return awkward.param.test; });

class TableNameTest : public OpenFacade {
protected:
    TableNameTest() { RawSqlite(path).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1)"); }
};

TEST_F(TableNameTest, NameWithItsSchemaIsNotFoundByTheExistenceTest)
{
    int result = UnwrittenResult;

    EXPECT_FALSE(database.ExistsTable("main.t", result));
    EXPECT_EQ(database.ExistData("main.t", "", result), 0);
    EXPECT_TRUE(database.DropTable("main.t"));

    EXPECT_EQ(PlainRows("SELECT a FROM t"), (std::vector<std::vector<std::string>>{{"1"}}));
}

TEST_F(TableNameTest, NewNameMayEndTheStatementAndBeginAnother)
{
    const SqliteCallRecorder recorded;

    EXPECT_TRUE(database.AlterTable("t", "u; CREATE TABLE extra (a)"));

    EXPECT_EQ(recorded.Executed(), std::vector<std::string>{"ALTER TABLE t RENAME TO u; CREATE TABLE extra (a)"});
    int result = UnwrittenResult;
    EXPECT_TRUE(database.ExistsTable("extra", result));
}

} // namespace

} // namespace Morvik::sql::tests
