#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

#include "support/OomInjector.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

TEST(IdleHeapTest, OpenFacadeHoldsLittleMemoryBesidesSqlites)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("idle.db");
    RawSqlite(path).Execute("CREATE TABLE t (a)");
    ASSERT_TRUE(DatabaseApi().OpenDatabase(path, false)); // makes the allocations that a process makes only once

    const std::size_t before = LiveBytesOfNew();
    const auto facade = std::make_unique<DatabaseApi>();
    ASSERT_TRUE(facade->OpenDatabase(path, false));
    const std::size_t held = LiveBytesOfNew() - before;

    RecordProperty("bytes", static_cast<int>(held));
    EXPECT_GT(held, sizeof(DatabaseApi));
    EXPECT_LE(held, TKOSQLLITE_IDLE_HEAP_BUDGET);
}

} // namespace

} // namespace Morvik::sql::tests
