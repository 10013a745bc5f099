#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "files/Transcript.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;

constexpr int ForReading = SQLITE_OPEN_READONLY;
constexpr int ForWriting = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

// Paths that are not regular files: the library must return at once. If raw SQLite returns at all, the results must be
// equal.
class UnusualFileTest : public testing::Test {
protected:
    /// Every operation on the device must give the same result as the reference.
    static void ExpectTheReferencesAnswers(const std::string& device)
    {
        for (const bool readOnly : {true, false}) {
            EXPECT_EQ(Difference(LibraryTranscript(device, readOnly), ReferenceTranscript(device, readOnly)), "");
        }
        EXPECT_TRUE(fs::is_character_file(device));
        EXPECT_FALSE(fs::exists(device + "-journal"));
    }

    /// Opens a device in a directory where no other file may be created; the device does not support sync.
    void OpenWithoutJournal(const std::string& device)
    {
        EXPECT_TRUE(database.OpenDatabase(device, false)) << database.GetLastErrorMsg();
        EXPECT_TRUE(database.Execute("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY"));
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("special.db");
    DatabaseApi database;
};

TEST_F(UnusualFileTest, FullDeviceRefusesEveryChange)
{
    ExpectTheReferencesAnswers("/dev/full");

    OpenWithoutJournal("/dev/full");
    EXPECT_FALSE(database.Execute("CREATE TABLE t (a)"));
    EXPECT_THAT(database, HasError(SQLITE_FULL, sqlite3_errstr(SQLITE_FULL)));
}

TEST_F(UnusualFileTest, DeviceThatForgetsEverythingHoldsNoTable)
{
    int result = -1;
    ExpectTheReferencesAnswers("/dev/null");

    OpenWithoutJournal("/dev/null");
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

    EXPECT_FALSE(database.OpenDatabase(path, false));
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path, ForWriting).message));
    EXPECT_FALSE(database.OpenDatabase(path, true));
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path, ForReading).message));

    EXPECT_TRUE(fs::is_socket(path));
    close(descriptor);
}

TEST_F(UnusualFileTest, LinkLoopInPlaceOfTheFileIsNotOpened)
{
    fs::create_symlink("special.db", path);

    EXPECT_FALSE(database.OpenDatabase(path, false));
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path, ForWriting).message));
    EXPECT_FALSE(database.OpenDatabase(path, true));
    EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, FailureOfOpen(path, ForReading).message));

    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(UnusualFileTest, LinkLoopInPlaceOfTheDirectoryIsNamedByTheDatabase)
{
    fs::create_symlink("special.db", path);

    for (const bool readOnly : {false, true}) {
        EXPECT_FALSE(database.OpenDatabase(path + "/inner/x.db", readOnly));
        EXPECT_THAT(database, HasError(111, "Create directory failed: " + path + "/inner/x.db"));
    }
}

TEST_F(UnusualFileTest, LinkToAMissingFileMakesThatFile)
{
    fs::create_symlink("target.db", path);

    EXPECT_TRUE(database.OpenDatabase(path, false)) << database.GetLastErrorMsg();
    EXPECT_TRUE(database.Execute("CREATE TABLE t (a)"));

    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(RawSqlite(directory.File("target.db")).Value("SELECT count(*) FROM sqlite_master"), "1");
}

} // namespace

} // namespace Morvik::sql::tests
