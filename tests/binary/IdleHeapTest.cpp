#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "support/OomInjector.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

// Returns the last column of the line that names this machine.
std::size_t AllowedBytes()
{
    std::ifstream budgets(TKOSQLLITE_FOOTPRINT_BUDGETS);
    for (std::string line; std::getline(budgets, line);) {
        std::istringstream columns(line);
        std::string machine;
        std::string file;
        std::string symbols;
        std::size_t heap = 0;
        if (columns >> machine >> file >> symbols >> heap && machine == TKOSQLLITE_MACHINE) {
            return heap;
        }
    }
    return 0;
}

TEST(IdleHeapTest, OpenFacadeHoldsLittleMemoryBesidesSqlites)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("idle.db");
    RawSqlite(path).Execute("CREATE TABLE t (a)");
    ASSERT_TRUE(DatabaseApi().OpenDatabase(path, false)); // makes the allocations that a process makes only once
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
