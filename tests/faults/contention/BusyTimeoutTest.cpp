#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "contention/ContendedFile.h"
#include "support/Cells.h"
#include "support/DatabaseContent.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

class BusyTimeoutTest : public ContendedFile {
protected:
    /// Waits until another program has locked the file.
    void WaitForTheLock() const
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!std::filesystem::exists(mark) && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_TRUE(std::filesystem::exists(mark)) << "the file was never locked";
    }

    const std::string mark = directory.File("locked");
    const DbTableDataWrite entry{{"writer", "number", "amount"}, {{{IntegerCell(1), IntegerCell(1), IntegerCell(0)}}}};
};

TEST_F(BusyTimeoutTest, WriterWaitsAsLongAsItWasToldTo)
{
    DatabaseApi database;
    ASSERT_TRUE(database.OpenDatabase(path, false));
    ChildProcess holder(Contender("holder", mark, 0.5, "0"));
    WaitForTheLock();

    const bool written = database.WriteTableValues("entry", entry);
    EXPECT_FALSE(written);
    EXPECT_THAT(database, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));
    ASSERT_TRUE(database.Execute("PRAGMA busy_timeout = 60000"));
    EXPECT_TRUE(database.WriteTableValues("entry", entry)) << database.GetLastErrorMsg();

    EXPECT_THAT(Report(holder.Wait()).entries, ElementsAre(1));
    EXPECT_THAT(RawSqlite(path).Rows("SELECT writer FROM entry ORDER BY rowid"),
                ElementsAre(ElementsAre("0"), ElementsAre("1")))
        << "the writer did not wait for the other program's commit";
    EXPECT_EQ(RawSqlite(path).Value("PRAGMA integrity_check"), "'ok'");
}

TEST_F(BusyTimeoutTest, WaitThatWasTooShortEndsInTheSameRefusal)
{
    DatabaseApi database;
    DbTableData data;
    ASSERT_TRUE(database.OpenDatabase(path, false));
    ASSERT_TRUE(database.Execute("PRAGMA busy_timeout = 50"));
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const auto begin = std::chrono::steady_clock::now();

    EXPECT_FALSE(database.WriteTableValues("entry", entry));
    EXPECT_THAT(database, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));
    EXPECT_FALSE(database.ReadTableValues("entry", data));
    EXPECT_THAT(database, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));

    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2 * 50));
    other.Execute("COMMIT");
    EXPECT_TRUE(database.WriteTableValues("entry", entry));
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_EQ(ContentOf(path), (DatabaseContent{{"balance", {{"0"}}}, {"entry", {{"1", "1", "0"}}}}));
}

} // namespace

} // namespace Morvik::sql::tests
