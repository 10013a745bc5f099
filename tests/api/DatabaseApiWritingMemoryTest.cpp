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
        for (int row = 0; row < 100; ++row) {
            data.rows.push_back({{BlobCell(std::string(50, 'x')), TagCell(DbTableColumnType::UnixTimeNow)}});
        }
    }

    const std::string cells = "\"" + std::string(50, 'x') + "\",strftime('%s', 'now')";
    DbTableDataWrite data{{"name", "time"}, {}};
};

// A list of n items has n - 1 commas, but the expected size counts n: one byte too many for each row and for the column
// list.
TEST_F(DatabaseApiWritingMemoryTest, InsertIsAllocatedOnceWithAByteToSpareForEachList)
{
    std::string text = "INSERT INTO event (name,time) VALUES (" + cells + ")";
    for (std::size_t row = 1; row < data.rows.size(); ++row) {
        text += " ,(" + cells + ")";
    }
    std::size_t allocated = 0;

    {
        const LargestAllocation largest;
        EXPECT_TRUE(database.WriteTableValues("event", data));
        allocated = largest.Size();
    }

    const std::size_t spare = data.rows.size() + 1 + 1; // the first row has no comma before it either
    EXPECT_EQ(allocated, text.size() + spare + 1);
}

TEST_F(DatabaseApiWritingMemoryTest, UpdateIsAllocatedOnceWithFewBytesToSpare)
{
    data.rows.back() = {{BlobCell(""), IntegerCell(0)}}; // only the first row counts
    const std::string condition = "WHERE name IS NOT NULL";
    const std::string text = "UPDATE event SET (name,time)=(" + cells + ") " + condition;
    std::size_t allocated = 0;

    {
        const LargestAllocation largest;
        EXPECT_TRUE(database.UpdateTableValues("event", data, condition));
        allocated = largest.Size();
    }

    EXPECT_EQ(allocated, text.size() + 9 + 1);
}

} // namespace

} // namespace Morvik::sql::tests
