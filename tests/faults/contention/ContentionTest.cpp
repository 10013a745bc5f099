#include <sql/DatabaseApi.h>

#include <chrono>
#include <deque>
#include <map>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "support/Cells.h"
#include "support/ChildProcess.h"
#include "support/DatabaseContent.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

using testing::AnyOf;
using testing::ElementsAre;

constexpr std::size_t Writers = 3;
constexpr std::size_t Readers = 2;

// Several processes on one file, which has a balance and no entries: an operation that cannot be done returns an error,
// and every committed entry is in the file exactly once.
class ContentionTest : public testing::Test {
protected:
    ContentionTest()
    {
        RawSqlite(path).Execute("CREATE TABLE entry (writer INTEGER, number INTEGER, amount INTEGER);"
                                "CREATE TABLE balance (amount INTEGER); INSERT INTO balance VALUES (0)");
    }

    /// Runs writers and readers at the same time. Expects exactly the entries that the writers committed in the file,
    /// and a balance that agrees with them. Returns how many operations were rejected.
    int Contend(const std::string& timeout) const
    {
        const int seconds = Rounds(2, 60);
        std::deque<ChildProcess> workers;
        for (std::size_t i = 1; i <= Writers + Readers; ++i) {
            const std::string role = i <= Writers ? "writer" : "reader";
            workers.emplace_back(std::vector<std::string>{TKOSQLLITE_STRESS_WORKER, role, path, std::to_string(i),
                                                          std::to_string(seconds), timeout});
        }
        int rejections = 0;
        std::vector<std::vector<std::string>> written;
        for (std::size_t i = 1; i <= workers.size(); ++i) {
            SCOPED_TRACE("worker " + std::to_string(i));
            const ChildResult result = workers[i - 1].Wait();
            EXPECT_EQ(result.status, 0) << "signal " << result.signal;
            EXPECT_EQ(result.err, "");
            std::map<std::string, int> counts;
            std::istringstream words(result.out);
            for (std::string word, number; words >> word; ++counts[word]) {
                EXPECT_THAT(word, AnyOf("entry", "read", "busy"));
                if (word == "entry" && words >> number) {
                    written.push_back({std::to_string(i), number});
                }
            }
            EXPECT_EQ(counts.contains("entry"), i <= Writers);
            EXPECT_EQ(counts.contains("read"), i > Writers);
            rejections += counts["busy"];
        }

        RawSqlite raw(path);
        EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
        EXPECT_EQ(raw.Rows("SELECT writer, number FROM entry ORDER BY writer, rowid"), written);
        EXPECT_EQ(raw.Value("SELECT amount FROM balance"), raw.Value("SELECT sum(amount) FROM entry"));
        return rejections;
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("contended.db");
};

TEST_F(ContentionTest, NoEntryIsLostOrDoubledByRejectedOperations)
{
    EXPECT_GT(Contend("0"), 0) << "no operation was rejected";
}

TEST_F(ContentionTest, ProcessesThatMayWaitAreNeverRejected)
{
    EXPECT_EQ(Contend("120000"), 0);
}

TEST_F(ContentionTest, ReadersBesideAWriteAheadLogSeeCompleteChanges)
{
    ASSERT_EQ(RawSqlite(path).Value("PRAGMA journal_mode = WAL"), "'wal'");

    EXPECT_GT(Contend("0"), 0) << "no operation was rejected";
}

class BusyTimeoutTest : public ContentionTest {
protected:
    BusyTimeoutTest() { EXPECT_TRUE(database.OpenDatabase(path, false)); }

    bool WriteEntry() { return database.WriteTableValues("entry", entry); }

    const DbTableDataWrite entry{{"writer", "number", "amount"}, {{{IntegerCell(1), IntegerCell(1), IntegerCell(0)}}}};
    DatabaseApi database;
};

TEST_F(BusyTimeoutTest, WriterWaitsAsLongAsTheTimeoutSays)
{
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE; INSERT INTO entry VALUES (0, 1, 0)");

    EXPECT_FALSE(WriteEntry());
    EXPECT_THAT(database, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));
    ASSERT_TRUE(database.Execute("PRAGMA busy_timeout = 60000"));
    std::thread commit([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        other.Execute("COMMIT");
    });
    EXPECT_TRUE(WriteEntry()) << database.GetLastErrorMsg();

    commit.join();
    EXPECT_THAT(RawSqlite(path).Rows("SELECT writer FROM entry ORDER BY rowid"),
                ElementsAre(ElementsAre("0"), ElementsAre("1")))
        << "the writer did not wait for the other commit";
    EXPECT_EQ(RawSqlite(path).Value("PRAGMA integrity_check"), "'ok'");
}

TEST_F(BusyTimeoutTest, TimeoutThatIsTooShortEndsInTheSameError)
{
    DbTableData data;
    ASSERT_TRUE(database.Execute("PRAGMA busy_timeout = 50"));
    RawSqlite other(path);
    other.Execute("BEGIN EXCLUSIVE");
    const auto begin = std::chrono::steady_clock::now();

    EXPECT_FALSE(WriteEntry());
    EXPECT_THAT(database, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));
    EXPECT_FALSE(database.ReadTableValues("entry", data));
    EXPECT_THAT(database, HasError(SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)));

    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2 * 50));
    other.Execute("COMMIT");
    EXPECT_TRUE(WriteEntry());
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_EQ(ContentOf(path), (DatabaseContent{{"balance", {{"0"}}}, {"entry", {{"1", "1", "0"}}}}));
}

} // namespace

} // namespace Morvik::sql::tests
