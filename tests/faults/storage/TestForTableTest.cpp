#include <sql/DatabaseApi.h>

#include <gtest/gtest.h>

#include <sqlite3.h>

#include "faults/storage/FaultInjectionVfs.h"
#include "support/DatabaseContent.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

// The operations that first test whether their table exists treat a failed test as an absent table. Callers rely on the
// results, although they are odd.
class TestForTableTest : public testing::TestWithParam<FileFault> {
protected:
    // Opens a file with a table and reads its schema, so that the fault happens in the test for the table. Runs the
    // operation, and expects it to leave the content unchanged.
    template <typename Operation>
    void RunWithFault(Operation operation)
    {
        const TemporaryDirectory directory;
        const std::string path = directory.File("test.db");
        RawSqlite(path).Execute("CREATE TABLE reading (id INTEGER); INSERT INTO reading VALUES (1)");
        {
            FaultInjectionVfs disk;
            DatabaseApi facade;
            int result = -1;
            ASSERT_TRUE(facade.OpenDatabase(path, false));
            ASSERT_TRUE(facade.ExistsTable("reading", result));
            disk.Arm(GetParam());

            operation(facade);

            EXPECT_EQ(disk.Fired(), 1);
            EXPECT_TRUE(facade.CloseDatabase());
        }
        EXPECT_EQ(ContentOf(path), (DatabaseContent{{"reading", {{"1"}}}}));
    }
};

TEST_P(TestForTableTest, DropTableSucceedsAndDropsNothing)
{
    RunWithFault([](DatabaseApi& facade) {
        EXPECT_TRUE(facade.DropTable("reading"));
        EXPECT_THAT(facade, HasError(0, ""));
    });
}

TEST_P(TestForTableTest, AlterTableFindsNoTable)
{
    RunWithFault([](DatabaseApi& facade) {
        EXPECT_FALSE(facade.AlterTable("reading", "old_reading"));
        EXPECT_THAT(facade, HasError(113, "No table exists: reading"));
    });
}

TEST_P(TestForTableTest, ExistsTableAndExistDataFindNothingWithCodeZero)
{
    int result = -1;
    RunWithFault([&](DatabaseApi& facade) { EXPECT_FALSE(facade.ExistsTable("reading", result)); });
    EXPECT_EQ(result, 0);

    result = -1;
    RunWithFault([&](DatabaseApi& facade) { EXPECT_EQ(facade.ExistData("reading", "", result), 0); });
    EXPECT_EQ(result, 0);
}

INSTANTIATE_TEST_SUITE_P(Storage, TestForTableTest,
                         testing::Values(FileFault{.call = FileCall::Read, .code = SQLITE_IOERR_READ},
                                         FileFault{.call = FileCall::Lock, .code = SQLITE_BUSY}),
                         [](const auto& tested) {
                             return std::string(tested.param.code == SQLITE_BUSY ? "LockedByAnother" : "CannotRead");
                         });

} // namespace

} // namespace Morvik::sql::tests
