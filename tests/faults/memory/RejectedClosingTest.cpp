#include <sql/DatabaseApi.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

// The only situation in which running out of memory ends the process: a connection object is destroyed, SQLite rejects
// closing its connection, and the message cannot be stored. It cannot happen if statements are destroyed before their
// database.
template <typename Owner>
void DestroyWithoutMemory(std::optional<Owner>& owner)
{
    const OomInjector failing(0);
    owner.reset();
}

TEST(RejectedClosingDeathTest, ConnectionDestroyedBeforeItsStatementEndsTheProcessWithoutMemory)
{
    std::optional<SqlDatabase> connection(std::in_place);
    ASSERT_TRUE(connection->Open(":memory:", false));
    SqlCommand statement(*connection);
    ASSERT_TRUE(statement.Prepare("SELECT 1"));

    EXPECT_EXIT(DestroyWithoutMemory(connection), testing::KilledBySignal(SIGABRT), "");
}

TEST(RejectedClosingDeathTest, FacadeDestroyedBeforeItsStatementEndsTheProcessWithoutMemory)
{
    std::optional<DatabaseApi> facade(std::in_place);
    ASSERT_TRUE(facade->OpenDatabase(":memory:", false));
    SqlCommand statement = facade->PrepareStatement("SELECT 1");

    EXPECT_EXIT(DestroyWithoutMemory(facade), testing::KilledBySignal(SIGABRT), "");

    statement.Finalize();
}

} // namespace

} // namespace Morvik::sql::tests
