#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "support/FailingAllocation.h"
#include "support/PlainSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

// The last column of the first line that names a machine; it is the same for all of them.
std::size_t AllowedBytes()
{
    std::ifstream budgets(TKOSQLLITE_FOOTPRINT_BUDGETS);
    std::string line;
    std::string machine;
    std::size_t file = 0;
    std::size_t symbols = 0;
    std::size_t heap = 0;
    while (std::getline(budgets, line)) {
        std::istringstream columns(line);
        if (columns >> machine >> file >> symbols >> heap) {
            return heap;
        }
    }
    return 0;
}

TEST(IdleHeapTest, OpenFacadeHoldsLittleBesideSqlitesOwn)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("idle.db");
    PlainSqlite(path).Execute("CREATE TABLE t (a)");
    ASSERT_TRUE(DatabaseApi().OpenDatabase(path, false)); // makes what a process makes once
    ASSERT_GT(AllowedBytes(), 0U);

    const std::size_t before = LiveBytesOfNew();
    const auto facade = std::make_unique<DatabaseApi>();
    ASSERT_TRUE(facade->OpenDatabase(path, false));
    const std::size_t held = LiveBytesOfNew() - before;

    RecordProperty("bytes", static_cast<int>(held));
    EXPECT_GT(held, sizeof(DatabaseApi));
    EXPECT_LE(held, AllowedBytes());
}

} // namespace

} // namespace Morvik::sql::tests
