#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "support/Cells.h"
#include "support/OomInjector.h"
#include "support/OpenFacade.h"

namespace Morvik::sql::tests {

namespace {

class DatabaseApiWritingMemoryTest : public OpenFacade {
protected:
    DatabaseApiWritingMemoryTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE event (name, time)"));
        data.rows.assign(100, {{BlobCell(std::string(50, 'x')), TagCell(DbTableColumnType::UnixTimeNow)}});
    }

    /// The size of the largest allocation while `act` runs, without the zero byte at its end.
    template <typename Act>
    static std::size_t LargestDuring(Act act)
    {
        const LargestAllocation largest;
        EXPECT_TRUE(act());
        return largest.Size() - 1;
    }

    const std::string cells = "\"" + std::string(50, 'x') + "\",strftime('%s', 'now')";
    DbTableDataWrite data{{"name", "time"}, {}};
};

// A list of n items has n - 1 commas, but the expected size counts n: one byte too many for each row and for the column
// list. The first row has no comma before it either.
TEST_F(DatabaseApiWritingMemoryTest, InsertIsAllocatedOnceWithAByteToSpareForEachList)
{
    std::string text = "INSERT INTO event (name,time) VALUES (" + cells + ")";
    for (std::size_t row = 1; row < data.rows.size(); ++row) {
        text += " ,(" + cells + ")";
    }

    EXPECT_EQ(LargestDuring([&] { return database.WriteTableValues("event", data); }),
              text.size() + data.rows.size() + 2);
}

TEST_F(DatabaseApiWritingMemoryTest, UpdateIsAllocatedOnceWithFewBytesToSpare)
{
    data.rows.back() = {{BlobCell(""), IntegerCell(0)}}; // only the first row counts
    const std::string condition = "WHERE name IS NOT NULL";
    const std::string text = "UPDATE event SET (name,time)=(" + cells + ") " + condition;
    EXPECT_EQ(LargestDuring([&] { return database.UpdateTableValues("event", data, condition); }), text.size() + 9);
}

} // namespace

} // namespace Morvik::sql::tests
