#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <new>
#include <ranges>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include "support/Cells.h"
#include "support/OpenFacade.h"

#if TKOSQLLITE_ADDRESS_SANITIZER
// Declared here, because GCC has the function but no header for it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace Morvik::sql::tests {

namespace {

/// The bytes that the complete process, SQLite included, currently holds from malloc.
std::size_t LiveBytes()
{
#if TKOSQLLITE_ADDRESS_SANITIZER
    return __sanitizer_get_current_allocated_bytes(); // mallinfo2 does not count this allocator
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

// A row-by-row query holds one row at a time, however many rows there are. Every row has the same size, and SQLite's
// page cache is kept smaller than the first rows, so that only the query could make the heap grow.

constexpr int Million = 1'000'000;
constexpr std::size_t Mebibyte = std::size_t{1} << 20;
const std::string Query = "SELECT a, b FROM t";

class DatabaseApiLongWalkTest : public OpenFacade {
protected:
    /// Fills the table with a million rows and begins the query of all its rows.
    void BeginWalk()
    {
        ASSERT_TRUE(database.Execute("PRAGMA synchronous = OFF; PRAGMA cache_size = 4; CREATE TABLE t (a, b);"
                                     "WITH RECURSIVE numbers (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers "
                                     "LIMIT " +
                                     std::to_string(Million) +
                                     ") INSERT INTO t SELECT n, printf('%040d', n) FROM numbers"));
        ASSERT_TRUE(database.SqlQueryBegin(Query));
    }

    DbTableRowValues row;
};

TEST_F(DatabaseApiLongWalkTest, MemoryDoesNotGrowDuringAMillionRows)
{
    std::size_t atFirst = 0;
    std::size_t atLast = 0;
    int rows = 0;
    BeginWalk();

    for (const DbTableRowValues& current : database) {
        ASSERT_EQ(std::get<int>(current.cells.at(0).value), ++rows);
        if (rows == 1000) {
            atFirst = LiveBytes();
        } else if (rows == Million) {
            atLast = LiveBytes();
        }
    }

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_EQ(rows, Million);
    EXPECT_EQ(atLast, atFirst);
}

// None of the values in `next` needs the large buffer.
TEST_F(DatabaseApiLongWalkTest, LargeBufferIsReleasedByASmallerRow)
{
    for (const std::string large : {"printf('%1048576d', 1)", "zeroblob(1048576)"}) {
        for (const std::string next : {"1", "0.5", "'text'", "x'00'", "NULL", "printf('%5000d', 1)"}) {
            SCOPED_TRACE(large + " before " + next);
            ASSERT_TRUE(database.SqlQueryBegin("VALUES (" + next + "), (" + large + "), (" + next + ")"));
            ASSERT_TRUE(database.ReadNextRow(row) && database.ReadNextRow(row));
            const std::size_t withLarge = LiveBytes();

            ASSERT_TRUE(database.ReadNextRow(row));

            EXPECT_LT(LiveBytes(), withLarge - Mebibyte * 9 / 10) << "SQLite keeps its copy, the row does not";
            row.cells.clear();
        }
    }
}

TEST_F(DatabaseApiLongWalkTest, BufferIsKeptUpToTwoLimits)
{
    // Whether a buffer of this capacity is used again for the query's value.
    const auto isKept = [&](auto buffer, std::size_t capacity, const std::string& query) {
        buffer.reserve(capacity);
        const auto* const start = buffer.data();
        row.cells.clear();
        row.cells.push_back({DbTableColumnType::None, 0, std::move(buffer)});
        EXPECT_TRUE(database.SqlQueryBegin(query) && database.ReadNextRow(row));
        return std::get<decltype(buffer)>(row.cells.front().value).data() == start;
    };
    struct Case {
        std::size_t capacity;
        int next; // the size of the value that is read into the buffer
        bool kept;
    };
    for (const auto& [capacity, next, kept] :
         {Case{4096, 20, true}, Case{4097, 20, false}, Case{10000, 5000, true}, Case{10001, 5000, false}}) {
        const std::string size = std::to_string(next);
        SCOPED_TRACE(std::to_string(capacity) + " for " + size);

        EXPECT_EQ(isKept(std::string(), capacity, "SELECT printf('%" + size + "d', 1)"), kept);
        EXPECT_EQ(isKept(std::vector<char>(), capacity, "SELECT zeroblob(" + size + ")"), kept);
    }
}

TEST_F(DatabaseApiLongWalkTest, FacadeReleasesItsRowWhenAQueryIsBegun)
{
    const std::size_t before = LiveBytes();
    ASSERT_TRUE(database.SqlQueryBegin("SELECT zeroblob(1048576)"));
    ASSERT_NE(database.begin(), database.end());
    ASSERT_TRUE(database.CloseReadTable());
    ASSERT_GT(LiveBytes(), before + Mebibyte) << "closing leaves the current row as it is";

    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1"));

    EXPECT_LT(LiveBytes(), before + Mebibyte / 2);
}

#if !TKOSQLLITE_ADDRESS_SANITIZER

/// Reads all rows, with a walk or a complete read, in at most 32 MiB more memory than now. Then ends this process.
[[noreturn]] void ReadInLittleMemory(DatabaseApi& database, bool walk)
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t limit = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + 32 * Mebibyte;
    const rlimit limits{limit, limit};
    if (pages == 0 || setrlimit(RLIMIT_AS, &limits) != 0) {
        std::_Exit(1);
    }
    try {
        DbTableData data;
        if (walk) {
            std::cerr << std::ranges::distance(database) << " rows";
        } else {
            database.ReadValues(Query, data);
        }
        std::cerr << ", code " << database.GetLastError();
    } catch (const std::bad_alloc&) {
        std::cerr << "out of memory";
    }
    std::_Exit(0);
}

TEST_F(DatabaseApiLongWalkTest, WalksInAnAddressSpaceTooSmallForAllRows)
{
    BeginWalk();
    EXPECT_EXIT(ReadInLittleMemory(database, true), testing::ExitedWithCode(0), "1000000 rows, code 0");
    EXPECT_EXIT(ReadInLittleMemory(database, false), testing::ExitedWithCode(0), "out of memory|code 7");
}

#endif

} // namespace

} // namespace Morvik::sql::tests
