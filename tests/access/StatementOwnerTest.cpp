#include <sql/SqlCommand.h>
#include <sql/SqlTable.h>

#include <type_traits>
#include <utility>

#include "support/NoDestructor.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What commands and cursors have in common: each owns one statement of its connection.
template <typename Owner>
class StatementOwnerTest : public OpenConnection {
    static_assert(!std::is_copy_constructible_v<Owner> && !std::is_copy_assignable_v<Owner>);
    static_assert(std::is_nothrow_move_constructible_v<Owner> && std::is_nothrow_move_assignable_v<Owner>);
    static_assert(std::is_constructible_v<Owner, SqlDatabase&> && !std::is_convertible_v<SqlDatabase&, Owner>);
    static_assert(!std::is_constructible_v<Owner, SqlDatabase>, "a temporary connection would not outlive it");
};

struct OwnerName {
    template <typename Owner>
    static std::string GetName(int /*index*/)
    {
        return std::is_same_v<Owner, SqlCommand> ? "SqlCommand" : "SqlTable";
    }
};

using Owners = testing::Types<SqlCommand, SqlTable>;
TYPED_TEST_SUITE(StatementOwnerTest, Owners, OwnerName);

bool Compile(SqlCommand& command, const std::string& sql)
{
    return command.Prepare(sql);
}

bool Compile(const SqlTable& table, const std::string& sql)
{
    return table.Open(sql);
}

bool Advance(SqlCommand& command)
{
    return command.Step();
}

bool Advance(const SqlTable& table)
{
    return table.ReadNext();
}

TYPED_TEST(StatementOwnerTest, StartsWithoutAnErrorAndIsDestroyedWithoutACall)
{
    const SqliteCallRecorder sqlite;
    {
        const TypeParam owner(this->database);

        EXPECT_THAT(owner, HasError(0, ""));
    }
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TYPED_TEST(StatementOwnerTest, OwnerMadeBeforeTheConnectionOpensWorksAfterwards)
{
    SqlDatabase late;
    TypeParam owner(late);
    ASSERT_FALSE(Compile(owner, "SELECT 7"));
    late.Open(this->path, false);

    EXPECT_TRUE(Compile(owner, "SELECT 7"));
    EXPECT_EQ(NextInteger(owner), 7);
}

TYPED_TEST(StatementOwnerTest, ResultOfAStepThatIsNoRowAndNoEndIsAFailure)
{
    TypeParam owner(this->database);
    Compile(owner, "SELECT 7");
    const ReplacedResult replaced("sqlite3_step", SQLITE_OK);

    EXPECT_FALSE(Advance(owner));

    EXPECT_THAT(owner, HasError(SQLITE_OK, sqlite3_errmsg(this->Handle())));
}

TYPED_TEST(StatementOwnerTest, DestructorFinalizesTheStatementOnce)
{
    std::optional<TypeParam> owner(std::in_place, this->database);
    Compile(*owner, "SELECT 7");

    EXPECT_THAT(CallsDuring([&] { owner.reset(); }), ElementsAre("sqlite3_finalize(statement)"));
    EXPECT_TRUE(this->database.Close());
}

TYPED_TEST(StatementOwnerTest, MoveTakesTheStatementAndTheErrorOver)
{
    NoDestructor<TypeParam> source(this->database);
    Compile(*source, "SELECT 7 UNION ALL SELECT 8");
    ASSERT_EQ(NextInteger(*source), 7);
    const SqliteCallRecorder sqlite;

    TypeParam target(std::move(*source));

    EXPECT_THAT(sqlite.Calls(), IsEmpty());
    EXPECT_THAT(target, HasError(SQLITE_ROW, ""));
    EXPECT_EQ(NextInteger(target), 8);
}

TYPED_TEST(StatementOwnerTest, MovedFromOwnerMayBeAssignedTo)
{
    TypeParam source(this->database);
    const TypeParam target(std::move(source));
    NoDestructor<TypeParam> other(this->database);
    Compile(*other, "SELECT 7");

    source = std::move(*other);

    EXPECT_EQ(NextInteger(source), 7);
    EXPECT_THAT(target, HasError(0, ""));
}

TYPED_TEST(StatementOwnerTest, MoveAssignmentFinalizesTheStatementAndTakesTheConnectionOver)
{
    RawSqlite(this->path).Execute("CREATE TABLE t(a)");
    NoDestructor<TypeParam> source(this->database);
    const std::string message = LeaveMessage(*source);
    SqlDatabase other;
    other.Open(":memory:", false);
    TypeParam target(other);
    Compile(target, "SELECT 8");

    EXPECT_THAT(CallsDuring([&] { EXPECT_EQ(&(target = std::move(*source)), &target); }),
                ElementsAre("sqlite3_finalize(statement)"));

    EXPECT_THAT(target, HasError(SQLITE_ERROR, message));
    EXPECT_TRUE(Compile(target, "SELECT * FROM t"));
}

} // namespace

} // namespace Morvik::sql::tests
