#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>

#include "faults/files/Transcript.h"
#include "support/TemporaryDirectory.h"

// Names that are too long or contain unusual bytes, and paths that are not regular files. The library must return at
// once and give the outcomes of the reference implementation.

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::AllOf;
using testing::Contains;
using testing::Field;
using testing::StartsWith;

constexpr int CreateDirectoryFailed = 111;
constexpr int NoTableExists = 113;

void Nothing() {}

void MakeSocket()
{
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address{AF_UNIX, "special"};
    ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    close(descriptor);
}

void MakeLinkToItself()
{
    fs::create_symlink("special", "special");
}

void MakeLinkToAMissingFile()
{
    fs::create_symlink("target.db", "special");
}

struct UnusualPath {
    std::string name;

    /// If relative, the path is in an empty working directory.
    std::string path;

    /// The code that `operation` gives if the database is opened for writing.
    int code;

    /// The files and directories that exist after the operations.
    std::set<std::string> left{};

    /// Makes the file.
    void (*arrange)() = Nothing;

    std::string operation = "OpenDatabase";
};

const std::string TooLong(5000, 'x');
const std::string LongInner = std::string(200, 'a') + "/" + std::string(200, 'b') + "/" + std::string(200, 'c');
const std::string NotUtf8 = "\xFF\xC3(\xED\xA0\x80\x80.db";

std::string DirectoriesLongerThan(std::size_t size)
{
    std::string path = "directory";
    while (path.size() < size) {
        path += "/directory";
    }
    return path;
}

const std::vector<UnusualPath> UnusualPaths{
    {"TooLongFileName", TooLong, SQLITE_CANTOPEN},
    {"TooLongFileNameInADirectory", "./" + TooLong, SQLITE_CANTOPEN},
    {"TooLongDirectoryName", TooLong + "/test.db", CreateDirectoryFailed},
    {"TooLongPath", DirectoriesLongerThan(TooLong.size()) + "/test.db", CreateDirectoryFailed},
    {"PathThatOnlySqliteRejects",
     LongInner + "/test.db",
     SQLITE_CANTOPEN,
     {LongInner.substr(0, 200), LongInner.substr(0, 401), LongInner}},
    // The text after a zero byte is used only in the message about a directory that could not be created.
    {"ZeroByteInADirectoryName", "inner\0hidden/test.db"s, SQLITE_CANTOPEN, {"inner"}},
    {"ZeroByteInADirectoryNameThatIsNotMade", "/proc/none\0hidden/test.db"s, CreateDirectoryFailed},
    {"ZeroByteNameOfATemporaryDatabase", "\0hidden"s, SQLITE_OK},
    {"BytesThatAreNotUtf8", "dir\xFE/" + NotUtf8, SQLITE_OK, {"dir\xFE", "dir\xFE/" + NotUtf8}},
    {"DirectoryNameThatIsNotUtf8", "/proc/none" + NotUtf8 + "/test.db", CreateDirectoryFailed},
    {"FullDevice", "/dev/full", SQLITE_FULL, {}, Nothing, "CreateTable"},
    {"NullDeviceWithoutATable", "/dev/null", NoTableExists, {}, Nothing, "AlterTable"},
    {"Socket", "special", SQLITE_CANTOPEN, {"special"}, MakeSocket},
    {"LinkToItself", "special", SQLITE_CANTOPEN, {"special"}, MakeLinkToItself},
    {"LinkToItselfIsNoDirectory", "special/inner/x.db", CreateDirectoryFailed, {"special"}, MakeLinkToItself},
    {"LinkToAMissingFile", "special", SQLITE_OK, {"special", "target.db"}, MakeLinkToAMissingFile},
};

struct Result {
    Transcript transcript;
    std::set<std::string> left;
};

class UnusualPathTest : public testing::TestWithParam<UnusualPath> {
protected:
    template <typename Operations>
    static Result Run(Operations operations, bool readOnly)
    {
        const TemporaryDirectory directory;
        const ScopedWorkingDirectory working(directory.Path());
        GetParam().arrange();
        Result result{operations(GetParam().path, readOnly), {}};
        for (const fs::path& path : fs::recursive_directory_iterator(".")) {
            result.left.insert(path.native().substr(2));
        }
        return result;
    }
};

TEST_P(UnusualPathTest, GivesTheOutcomesOfTheReference)
{
    for (const bool readOnly : {true, false}) {
        const Result library = Run(LibraryTranscript, readOnly);
        const Result reference = Run(ReferenceTranscript, readOnly);

        EXPECT_EQ(Difference(library.transcript, reference.transcript), "");
        EXPECT_EQ(library.left, reference.left);
        if (!readOnly) {
            EXPECT_THAT(library.transcript,
                        Contains(AllOf(Field(&StepOutcome::operation, StartsWith(GetParam().operation)),
                                       Field(&StepOutcome::code, GetParam().code))));
            EXPECT_EQ(library.left, GetParam().left);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, UnusualPathTest, testing::ValuesIn(UnusualPaths),
                         [](const auto& tested) { return tested.param.name; });

} // namespace

} // namespace Morvik::sql::tests
