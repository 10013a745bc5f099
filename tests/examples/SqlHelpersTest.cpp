#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/SqlHelpers.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

using namespace examples;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Throws;
using testing::ThrowsMessage;

class SqlHelpersTest : public testing::Test {
protected:
    SqlHelpersTest() { Open(database, directory.File("helpers.db")); }

    // The only value that `sql` selects, or nothing for NULL.
    template <typename T>
    std::optional<T> ValueOf(const std::string& sql)
    {
        return ReadAll(
                   database, sql, +[](const DbTableRowValues& row) { return GetOptional<T>(row, 0); })
            .at(0);
    }

    const TemporaryDirectory directory;
    DatabaseApi database;
};

TEST_F(SqlHelpersTest, RequireThrowsWithMessageAndCode)
{
    EXPECT_NO_THROW(Require(database, true, "do it"));
    EXPECT_THAT([&] { Require(database, database.Execute("nonsense"), "do it"); },
                ThrowsMessage<std::runtime_error>("cannot do it: near \"nonsense\": syntax error (code 1)"));
}

TEST_F(SqlHelpersTest, OpenAppliesTheSettings)
{
    EXPECT_EQ(ValueOf<int>("PRAGMA busy_timeout"), 3000);
    EXPECT_EQ(ValueOf<int>("PRAGMA synchronous"), 3); // EXTRA
}

TEST_F(SqlHelpersTest, CellsAreWrittenAndReadBack)
{
    Require(database, database.Execute("CREATE TABLE t (a, b, c, d)"), "create");

    ASSERT_TRUE(database.WriteTableValues(
        "t", {.columns = {"a", "b", "c", "d"},
              .rows = {{.cells = {TextCell("x"), IntegerCell(7), RealCell(0.5), UnixTimeCell()}}}}));

    EXPECT_EQ(ValueOf<std::string>("SELECT a FROM t"), "x");
    EXPECT_EQ(ValueOf<int>("SELECT b FROM t"), 7);
    EXPECT_EQ(ValueOf<double>("SELECT c FROM t"), 0.5);
    EXPECT_EQ(ValueOf<int>("SELECT abs(d - strftime('%s', 'now')) < 600 FROM t"), 1);
}

TEST_F(SqlHelpersTest, OnlyGetOptionalAcceptsNull)
{
    DbTableData data;
    ASSERT_TRUE(database.ReadValues("SELECT NULL, ''", data));

    EXPECT_EQ(GetOptional<std::string>(data.rows.at(0), 0), std::nullopt);
    EXPECT_EQ(GetOptional<std::string>(data.rows.at(0), 1), "");
    EXPECT_THAT([&] { Get<std::string>(data.rows.at(0), 0); }, Throws<std::bad_variant_access>());
    EXPECT_THAT([&] { GetOptional<int>(data.rows.at(0), 1); }, Throws<std::bad_variant_access>());
}

TEST_F(SqlHelpersTest, QueryIsClosedAtTheEndOfItsScope)
{
    std::vector<int> numbers;
    {
        const Query query(database, "SELECT 1 UNION SELECT 2");
        for (const DbTableRowValues& row : query) {
            numbers.push_back(Get<int>(row, 0));
            EXPECT_FALSE(database.CloseDatabase());
            database.Execute("SELECT 1"); // sets the code to 0, so that the loop goes on
        }
        query.Finish();
    }

    EXPECT_THAT(numbers, ElementsAre(1, 2));
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(SqlHelpersTest, QueryDistinguishesAFailureFromTheEnd)
{
    EXPECT_THAT([&] { const Query query(database, "SELECT absent"); }, Throws<std::runtime_error>());
    const Query query(database, "SELECT abs(-9223372036854775807 - 1)"); // fails in the first step
    for ([[maybe_unused]] const DbTableRowValues& row : query) {
        ADD_FAILURE() << "the query has a row";
    }

    EXPECT_THAT([&] { query.Finish(); }, ThrowsMessage<std::runtime_error>(HasSubstr("integer overflow")));
}

TEST_F(SqlHelpersTest, ReadAllMakesAStructOfEachRow)
{
    struct Room {
        std::string name;
        std::optional<double> degrees;

        bool operator==(const Room&) const = default;
    };

    const std::vector<Room> rooms = ReadAll(
        database, "VALUES ('kitchen', 21.5), ('attic', NULL)", +[](const DbTableRowValues& row) {
            return Room{.name = Get<std::string>(row, 0), .degrees = GetOptional<double>(row, 1)};
        });

    EXPECT_THAT(rooms, ElementsAre(Room{"kitchen", 21.5}, Room{"attic", std::nullopt}));
    EXPECT_TRUE(database.CloseDatabase());
}

TEST_F(SqlHelpersTest, PrepareThrowsWithTheMessageOfSqlite)
{
    EXPECT_THAT([&] { Prepare(database, "SELECT absent"); },
                ThrowsMessage<std::runtime_error>("cannot prepare SELECT absent: no such column: absent (code 1)"));
}

TEST_F(SqlHelpersTest, BindOptionalBindsValuesAndNull)
{
    SqlCommand select = Prepare(database, "SELECT typeof(?1) || ' ' || quote(?1)");
    const auto bound = [&](const auto& value) {
        Require(select, BindOptional(select, 1, value) && select.Step(), "select");
        std::string text = select.ColumnText(0);
        Require(select, select.Reset(), "reset");
        return text;
    };

    EXPECT_EQ(bound(std::optional<std::string>("it's")), "text 'it''s'");
    EXPECT_EQ(bound(std::optional<std::string>()), "null NULL");
    EXPECT_EQ(bound(std::optional<std::string>("")), "text ''");
    EXPECT_EQ(bound(std::optional<long long>(4294967303)), "integer 4294967303");
    EXPECT_EQ(bound(std::optional<double>(0.5)), "real 0.5");
    EXPECT_EQ(bound(std::optional<double>()), "null NULL");
}

TEST_F(SqlHelpersTest, TransactionIsKeptOnlyAfterCommit)
{
    {
        Transaction transaction(database);
        Require(database, database.Execute("CREATE TABLE kept (a)"), "create");
        transaction.Commit();
    }
    {
        const Transaction transaction(database);
        Require(database, database.Execute("CREATE TABLE lost (a)"), "create");
        EXPECT_THAT([&] { const Transaction nested(database); }, Throws<std::runtime_error>());
    }

    EXPECT_EQ(ValueOf<std::string>("SELECT group_concat(name) FROM sqlite_master"), "kept");
    EXPECT_TRUE(database.Execute("BEGIN IMMEDIATE")); // fails if a transaction is open
}

} // namespace

} // namespace Morvik::sql::tests
