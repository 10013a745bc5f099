#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>

#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr int ForWriting = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
constexpr std::size_t TooLong = 5000;

class AwkwardNameTest : public testing::Test {
protected:
    void ExpectRefusedAsByRawSqlite(const std::string& name)
    {
        for (const bool readOnly : {false, true}) {
            const RawFailure plain = FailureOfOpen(name, readOnly ? SQLITE_OPEN_READONLY : ForWriting);
            EXPECT_FALSE(database.OpenDatabase(name, readOnly));
            EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, plain.message));
            EXPECT_EQ(plain.code, SQLITE_CANTOPEN);
            EXPECT_FALSE(database.IsOpen());
        }
    }

    void ExpectDirectoryRefused(const std::string& name)
    {
        for (const bool readOnly : {false, true}) {
            EXPECT_FALSE(database.OpenDatabase(name, readOnly));
            EXPECT_THAT(database, HasError(111, "Create directory failed: " + name));
            EXPECT_FALSE(database.IsOpen());
        }
    }

    const TemporaryDirectory directory;
    DatabaseApi database;
};

TEST_F(AwkwardNameTest, FileNameThatIsTooLongIsRefusedBySqlite)
{
    ExpectRefusedAsByRawSqlite(directory.File(std::string(TooLong, 'x')));
    ExpectRefusedAsByRawSqlite(std::string(TooLong, 'x'));

    EXPECT_TRUE(fs::is_empty(directory.Path()));
}

TEST_F(AwkwardNameTest, DirectoryNameThatIsTooLongIsNamedByTheDatabase)
{
    ExpectDirectoryRefused(directory.File(std::string(TooLong, 'x') + "/test.db"));

    EXPECT_TRUE(fs::is_empty(directory.Path()));
}

TEST_F(AwkwardNameTest, PathOfManyDirectoriesThatIsTooLongIsNamedByTheDatabase)
{
    std::string path = directory.Path().string();
    while (path.size() < TooLong) {
        path += "/directory";
    }

    ExpectDirectoryRefused(path + "/test.db");

    EXPECT_TRUE(fs::is_empty(directory.Path()));
}

TEST_F(AwkwardNameTest, PathThatIsTooLongOnlyForSqliteHasItsDirectoriesMade)
{
    const std::string inner =
        directory.File(std::string(200, 'a') + "/" + std::string(200, 'b') + "/" + std::string(200, 'c'));

    EXPECT_FALSE(database.OpenDatabase(inner + "/test.db", false));

    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(inner + "/test.db", ForWriting).message));
    EXPECT_TRUE(fs::is_directory(inner));
    EXPECT_TRUE(fs::is_empty(inner));
}

TEST_F(AwkwardNameTest, EverythingBehindAZeroByteIsLeftToTheMessage)
{
    const std::string hidden = directory.File("inner\0hidden/test.db"s);

    EXPECT_FALSE(database.OpenDatabase(hidden, false));

    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(directory.File("inner"), ForWriting).message))
        << "the name is that of the directory which was just made";
    EXPECT_TRUE(fs::is_directory(directory.File("inner")));
    ExpectDirectoryRefused("/proc/none\0hidden/test.db"s);
}

TEST_F(AwkwardNameTest, NameThatIsOnlyAZeroByteIsATemporaryDatabaseLikeTheEmptyName)
{
    EXPECT_TRUE(database.OpenDatabase("\0hidden"s, false)) << database.GetLastErrorMsg();

    EXPECT_TRUE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1)"));
    EXPECT_EQ(FailureOfOpen("", ForWriting).code, SQLITE_OK);
}

TEST_F(AwkwardNameTest, BytesThatAreNoUtf8AreKeptAsTheyAre)
{
    const std::string name = "\xFF\xC3(\xED\xA0\x80\x80.db";
    const std::string path = directory.File("dir\xFE/" + name);

    EXPECT_TRUE(database.OpenDatabase(path, false)) << database.GetLastErrorMsg();
    EXPECT_TRUE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (7)"));
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_TRUE(database.OpenDatabase(path, true)) << database.GetLastErrorMsg();

    EXPECT_EQ(fs::directory_iterator(directory.File("dir\xFE"))->path().filename().native(), name);
    EXPECT_EQ(RawSqlite(path).Value("SELECT a FROM t"), "7");
    EXPECT_TRUE(database.CloseDatabase());
    ExpectDirectoryRefused("/proc/none" + name + "/test.db");
}

} // namespace

} // namespace Morvik::sql::tests
