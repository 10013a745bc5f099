#include <gmock/gmock.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <new>
#include <ranges>
#include <string>

#include "support/AddressSanitizer.h"
#include "support/LiveBytes.h"
#include "support/OpenFacade.h"

namespace Morvik::sql::tests {

namespace {

// A row-by-row query holds one row at a time, however many rows there are. Every row has the same size, and SQLite's
// page cache is kept smaller than the first rows, so that only the query could make the heap grow.

constexpr int Million = 1'000'000;

class DatabaseApiLongWalkTest : public OpenFacade {
protected:
    /// Fills the table and begins the query of all its rows.
    void BeginWalk(int rows)
    {
        ASSERT_TRUE(database.Execute("PRAGMA synchronous = OFF; PRAGMA cache_size = 4; CREATE TABLE t (a, b);"
                                     "WITH RECURSIVE numbers (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers "
                                     "LIMIT " +
                                     std::to_string(rows) +
                                     ") INSERT INTO t SELECT n, printf('%040d', n) FROM numbers"));
        ASSERT_TRUE(database.SqlQueryBegin(query));
    }

    const std::string query = "SELECT a, b FROM t";
};

TEST_F(DatabaseApiLongWalkTest, HoldsTheSameMemoryAtTheMillionthRowAsAtTheThousandth)
{
    std::size_t atFirst = 0;
    std::size_t atLast = 0;
    int rows = 0;
    BeginWalk(Million);

    for (const DbTableRowValues& row : database) {
        ASSERT_EQ(std::get<int>(row.cells.at(0).value), ++rows);
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

TEST_F(DatabaseApiLongWalkTest, HoldsTheSameMemoryWhenTheCallerKeepsTheRow)
{
    constexpr int Rows = 100'000;
    BeginWalk(Rows);
    DbTableRowValues row;
    std::size_t atFirst = 0;

    for (int fetch = 1; fetch <= Rows; ++fetch) {
        ASSERT_TRUE(database.ReadNextRow(row));
        if (fetch == 1000) {
            atFirst = LiveBytes();
        }
    }

    EXPECT_EQ(LiveBytes(), atFirst);
}

// Every kind of value in place of a large text or blob, and a shorter text: none of these values needs the large
// buffer.
TEST_F(DatabaseApiLongWalkTest, LargeBufferIsReleasedByTheNextRowThatDoesNotNeedIt)
{
    constexpr std::size_t Large = std::size_t{1} << 20;
    for (const char* const large : {"printf('%1048576d', 1)", "zeroblob(1048576)"}) {
        for (const char* const next : {"1", "0.5", "'text'", "x'00'", "NULL", "printf('%5000d', 1)"}) {
            SCOPED_TRACE(std::string(large) + " before " + next);
            ASSERT_TRUE(database.SqlQueryBegin(std::string("SELECT ") + next + " UNION ALL SELECT " + large +
                                               " UNION ALL SELECT " + next));
            DbTableRowValues row;
            ASSERT_TRUE(database.ReadNextRow(row));
            ASSERT_TRUE(database.ReadNextRow(row));
            const std::size_t withLarge = LiveBytes();

            ASSERT_TRUE(database.ReadNextRow(row));

            EXPECT_LT(LiveBytes(), withLarge - Large * 9 / 10) << "SQLite keeps its own copy, the row does not";
        }
    }
}

TEST_F(DatabaseApiLongWalkTest, BufferOfOrdinarySizeServesTheNextRow)
{
    ASSERT_TRUE(database.SqlQueryBegin("SELECT printf('%4000d', 1) UNION ALL SELECT 'a text of over 15 bytes'"));
    DbTableRowValues row;
    ASSERT_TRUE(database.ReadNextRow(row));
    const char* const buffer = std::get<std::string>(row.cells.at(0).value).data();

    ASSERT_TRUE(database.ReadNextRow(row));

    EXPECT_EQ(std::get<std::string>(row.cells.at(0).value).data(), buffer);
}

TEST_F(DatabaseApiLongWalkTest, FacadeReleasesItsRowWhenAQueryIsBegun)
{
    const std::size_t before = LiveBytes();
    ASSERT_TRUE(database.SqlQueryBegin("SELECT zeroblob(1048576)"));
    ASSERT_NE(database.begin(), database.end());
    ASSERT_TRUE(database.CloseReadTable());
    ASSERT_GT(LiveBytes(), before + (std::size_t{1} << 20)) << "closing leaves the current row as it is";

    ASSERT_TRUE(database.SqlQueryBegin("SELECT 1"));

    EXPECT_LT(LiveBytes(), before + (std::size_t{1} << 19));
}

TEST_F(DatabaseApiLongWalkTest, WholeReadHoldsEveryRow)
{
    constexpr int Rows = 10'000;
    BeginWalk(Rows);
    DbTableData data;
    const std::size_t before = LiveBytes();

    ASSERT_TRUE(database.ReadValues(query, data));

    ASSERT_EQ(data.rows.size(), std::size_t{Rows});
    EXPECT_GT(LiveBytes(), before + Rows * (sizeof(DbTableRowValues) + 2 * sizeof(DbTableColumnValue) + 40));
}

#if !TKOSQLLITE_ADDRESS_SANITIZER

/// Limits the memory of this process to 32 MiB more than it has now.
void LimitAddressSpace()
{
    constexpr std::size_t Room = std::size_t{32} << 20;
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t limit = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + Room;
    const rlimit limits{limit, limit};
    if (pages == 0 || setrlimit(RLIMIT_AS, &limits) != 0) {
        std::_Exit(1);
    }
}

[[noreturn]] void WalkInLittleSpace(DatabaseApi& database)
{
    LimitAddressSpace();
    const auto rows = std::ranges::distance(database);
    std::cerr << rows << " rows, code " << database.GetLastError();
    std::_Exit(0);
}

[[noreturn]] void ReadInLittleSpace(DatabaseApi& database, const std::string& query)
{
    LimitAddressSpace();
    DbTableData data;
    try {
        const bool read = database.ReadValues(query, data);
        std::cerr << (read ? "all rows" : "code " + std::to_string(database.GetLastError()));
    } catch (const std::bad_alloc&) {
        std::cerr << "out of memory";
    }
    std::_Exit(0);
}

TEST_F(DatabaseApiLongWalkTest, WalksInAnAddressSpaceTooSmallForTheWholeResult)
{
    BeginWalk(Million);

    EXPECT_EXIT(WalkInLittleSpace(database), testing::ExitedWithCode(0), "1000000 rows, code 0");
    EXPECT_EXIT(ReadInLittleSpace(database, query), testing::ExitedWithCode(0), "out of memory|code 7");
}

#endif

} // namespace

} // namespace Morvik::sql::tests
