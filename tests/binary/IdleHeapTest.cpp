#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "support/LiveBytes.h"
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
    PlainSqlite(path).Execute("CREATE TABLE t (a)"); // also lets SQLite make what it makes once
    ASSERT_GT(AllowedBytes(), 0U);

    const std::size_t before = LiveBytes();
    const auto plain = std::make_unique<PlainSqlite>(path);
    const std::size_t withPlain = LiveBytes();
    const auto facade = std::make_unique<DatabaseApi>();
    ASSERT_TRUE(facade->OpenDatabase(path, false));
    const std::size_t withFacade = LiveBytes();

    const std::size_t sqlite = withPlain - before;
    const std::size_t whole = withFacade - withPlain;
    RecordProperty("bytes", static_cast<int>(whole - sqlite));
    EXPECT_GT(whole, sqlite);
    EXPECT_LE(whole - sqlite, AllowedBytes()) << whole << " with SQLite's own " << sqlite;
}

} // namespace

} // namespace Morvik::sql::tests
