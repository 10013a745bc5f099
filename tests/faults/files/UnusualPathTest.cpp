#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "faults/files/Transcript.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr int ForWriting = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
constexpr std::size_t TooLong = 5000;

class UnusualPathTest : public testing::Test {
protected:
    void ExpectRejectedAsByRawSqlite(const std::string& name)
    {
        for (const bool readOnly : {false, true}) {
            const RawFailure expected = FailureOfOpen(name, readOnly ? SQLITE_OPEN_READONLY : ForWriting);
            EXPECT_FALSE(database.OpenDatabase(name, readOnly));
            EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, expected.message));
            EXPECT_EQ(expected.code, SQLITE_CANTOPEN);
            EXPECT_FALSE(database.IsOpen());
        }
    }

    void ExpectDirectoryFailure(const std::string& name)
    {
        for (const bool readOnly : {false, true}) {
            EXPECT_FALSE(database.OpenDatabase(name, readOnly));
            EXPECT_THAT(database, HasError(111, "Create directory failed: " + name));
            EXPECT_FALSE(database.IsOpen());
        }
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("special.db");
    DatabaseApi database;
};

// Names that are too long or contain unusual bytes.
using AwkwardNameTest = UnusualPathTest;

TEST_F(AwkwardNameTest, SqliteRejectsAFileNameThatIsTooLong)
{
    ExpectRejectedAsByRawSqlite(directory.File(std::string(TooLong, 'x')));
    ExpectRejectedAsByRawSqlite(std::string(TooLong, 'x'));

    EXPECT_TRUE(fs::is_empty(directory.Path()));
}

TEST_F(AwkwardNameTest, TooLongDirectoryNameOrPathIsNotMade)
{
    std::string longPath = directory.Path().string();
    while (longPath.size() < TooLong) {
        longPath += "/directory";
    }

    ExpectDirectoryFailure(directory.File(std::string(TooLong, 'x') + "/test.db"));
    ExpectDirectoryFailure(longPath + "/test.db");

    EXPECT_TRUE(fs::is_empty(directory.Path()));
}

TEST_F(AwkwardNameTest, DirectoriesAreMadeBeforeSqliteRejectsATooLongPath)
{
    const std::string inner =
        directory.File(std::string(200, 'a') + "/" + std::string(200, 'b') + "/" + std::string(200, 'c'));

    EXPECT_FALSE(database.OpenDatabase(inner + "/test.db", false));

    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(inner + "/test.db", ForWriting).message));
    EXPECT_TRUE(fs::is_directory(inner));
    EXPECT_TRUE(fs::is_empty(inner));
}

TEST_F(AwkwardNameTest, OnlyTheMessageContainsWhatFollowsAZeroByte)
{
    const std::string hidden = directory.File("inner\0hidden/test.db"s);

    EXPECT_FALSE(database.OpenDatabase(hidden, false));

    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(directory.File("inner"), ForWriting).message))
        << "the name is that of the directory that was just made";
    EXPECT_TRUE(fs::is_directory(directory.File("inner")));
    ExpectDirectoryFailure("/proc/none\0hidden/test.db"s);
}

TEST_F(AwkwardNameTest, ZeroByteNameOpensATemporaryDatabase)
{
    EXPECT_TRUE(database.OpenDatabase("\0hidden"s, false)) << database.GetLastErrorMsg();

    EXPECT_TRUE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1)"));
    EXPECT_EQ(FailureOfOpen("", ForWriting).code, SQLITE_OK);
}

TEST_F(AwkwardNameTest, BytesThatAreNotUtf8AreKept)
{
    const std::string name = "\xFF\xC3(\xED\xA0\x80\x80.db";
    const std::string file = directory.File("dir\xFE/" + name);

    EXPECT_TRUE(database.OpenDatabase(file, false)) << database.GetLastErrorMsg();
    EXPECT_TRUE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (7)"));
    EXPECT_TRUE(database.CloseDatabase());
    EXPECT_TRUE(database.OpenDatabase(file, true)) << database.GetLastErrorMsg();

    EXPECT_EQ(fs::directory_iterator(directory.File("dir\xFE"))->path().filename().native(), name);
    EXPECT_EQ(RawSqlite(file).Value("SELECT a FROM t"), "7");
    EXPECT_TRUE(database.CloseDatabase());
    ExpectDirectoryFailure("/proc/none" + name + "/test.db");
}

// Paths that are not regular files: the library must return at once. If raw SQLite returns at all, the results must be
// equal.
class UnusualFileTest : public UnusualPathTest {
protected:
    /// Every operation on the device must have the outcome of the reference implementation. Then opens the device in a
    /// directory where no other file may be created; the device does not support sync.
    void CompareAndOpen(const std::string& device)
    {
        for (const bool readOnly : {true, false}) {
            EXPECT_EQ(Difference(LibraryTranscript(device, readOnly), ReferenceTranscript(device, readOnly)), "");
        }
        EXPECT_TRUE(fs::is_character_file(device));
        EXPECT_FALSE(fs::exists(device + "-journal"));
        EXPECT_TRUE(database.OpenDatabase(device, false)) << database.GetLastErrorMsg();
        EXPECT_TRUE(database.Execute("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY"));
    }
};

TEST_F(UnusualFileTest, FullDeviceRejectsEveryChange)
{
    CompareAndOpen("/dev/full");

    EXPECT_FALSE(database.Execute("CREATE TABLE t (a)"));
    EXPECT_THAT(database, HasError(SQLITE_FULL, sqlite3_errstr(SQLITE_FULL)));
}

TEST_F(UnusualFileTest, NullDeviceHoldsNoTable)
{
    int result = -1;
    CompareAndOpen("/dev/null");

    EXPECT_TRUE(database.Execute("CREATE TABLE t (a)")) << database.GetLastErrorMsg();
    EXPECT_FALSE(database.ExistsTable("t", result));
    EXPECT_EQ(result, 0);
}

TEST_F(UnusualFileTest, SocketIsNotOpened)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof(address.sun_path));
    path.copy(address.sun_path, path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_TRUE(fs::is_socket(path));

    ExpectRejectedAsByRawSqlite(path);

    EXPECT_TRUE(fs::is_socket(path));
    close(descriptor);
}

TEST_F(UnusualFileTest, LinkToItselfIsNeitherAFileNorADirectory)
{
    fs::create_symlink("special.db", path);

    ExpectRejectedAsByRawSqlite(path);
    ExpectDirectoryFailure(path + "/inner/x.db");

    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(UnusualFileTest, LinkToAMissingFileCreatesTheFile)
{
    fs::create_symlink("target.db", path);

    EXPECT_TRUE(database.OpenDatabase(path, false)) << database.GetLastErrorMsg();
    EXPECT_TRUE(database.Execute("CREATE TABLE t (a)"));

    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(RawSqlite(directory.File("target.db")).Value("SELECT count(*) FROM sqlite_master"), "1");
}

} // namespace

} // namespace Morvik::sql::tests
