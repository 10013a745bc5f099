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
    TestForTableTest()
    {
        RawSqlite(m_path).Execute("CREATE TABLE reading (id INTEGER); INSERT INTO reading VALUES (1)");
    }

    // Opens the file and reads its schema, so that the fault happens in the test for the table.
    void OpenWithFault(FaultInjectionVfs& disk, DatabaseApi& facade) const
    {
        int result = -1;
        ASSERT_TRUE(facade.OpenDatabase(m_path, false));
        ASSERT_TRUE(facade.ExistsTable("reading", result));
        disk.Arm(GetParam());
    }

    const DatabaseContent m_content{{"reading", {{"1"}}}};
    TemporaryDirectory m_directory;
    std::string m_path = m_directory.File("test.db");
};

TEST_P(TestForTableTest, DropTableSucceedsAndDropsNothing)
{
    FaultInjectionVfs disk;
    DatabaseApi facade;
    OpenWithFault(disk, facade);

    const bool dropped = facade.DropTable("reading");

    EXPECT_TRUE(dropped);
    EXPECT_THAT(facade, HasError(0, ""));
    EXPECT_EQ(disk.Fired(), 1);
    EXPECT_TRUE(facade.CloseDatabase());
    EXPECT_EQ(ContentOf(m_path), m_content);
}

TEST_P(TestForTableTest, AlterTableFindsNoTable)
{
    FaultInjectionVfs disk;
    DatabaseApi facade;
    OpenWithFault(disk, facade);

    const bool altered = facade.AlterTable("reading", "old_reading");

    EXPECT_FALSE(altered);
    EXPECT_THAT(facade, HasError(113, "No table exists: reading"));
    EXPECT_EQ(disk.Fired(), 1);
    EXPECT_TRUE(facade.CloseDatabase());
    EXPECT_EQ(ContentOf(m_path), m_content);
}

TEST_P(TestForTableTest, ExistsTableAndExistDataFindNothingWithCodeZero)
{
    FaultInjectionVfs disk;
    DatabaseApi facade;
    OpenWithFault(disk, facade);
    int existsResult = -1;
    int dataResult = -1;

    const bool exists = facade.ExistsTable("reading", existsResult);
    const int firedAtFirst = disk.Fired();
    disk.Arm(GetParam());
    const int count = facade.ExistData("reading", "", dataResult);

    EXPECT_FALSE(exists);
    EXPECT_EQ(existsResult, 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(dataResult, 0);
    EXPECT_EQ(firedAtFirst, 1);
    EXPECT_EQ(disk.Fired(), 1);
    EXPECT_TRUE(facade.CloseDatabase());
    EXPECT_EQ(ContentOf(m_path), m_content);
}

INSTANTIATE_TEST_SUITE_P(Storage, TestForTableTest,
                         testing::Values(FileFault{.call = FileCall::Read, .code = SQLITE_IOERR_READ},
                                         FileFault{.call = FileCall::Lock, .code = SQLITE_BUSY}),
                         [](const auto& tested) {
                             return std::string(tested.param.code == SQLITE_BUSY ? "LockedByAnother" : "CannotRead");
                         });

} // namespace

} // namespace Morvik::sql::tests
