#include <sql/SqlDatabase.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <utility>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <sys/stat.h>

#include "support/DatabaseContent.h"
#include "support/OomInjector.h"
#include "support/OpenConnection.h"
#include "support/ScopedPermissions.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::IsEmpty;
using testing::IsSupersetOf;

// Parent directories that can neither be found nor created.
class SqlDatabaseDirectoryTest : public testing::Test {
protected:
    // Checks that opening fails before SQLite is called, with the message for a directory that cannot be created.
    static void ExpectNoDirectoryFor(const std::string& path)
    {
        for (const bool readOnly : {false, true}) {
            SqlDatabase database;
            EXPECT_THAT(CallsDuring([&] { EXPECT_FALSE(database.Open(path, readOnly)); }), IsEmpty());
            EXPECT_THAT(database, HasError(111, "Create directory failed: " + path));
        }
    }

    const TemporaryDirectory directory;
};

TEST_F(SqlDatabaseDirectoryTest, FailureIsReportedWithTheCompletePath)
{
    std::ofstream(directory.File("file")) << "content";
    fs::create_symlink("loop", directory.Path() / "loop");
    fs::create_directory(directory.Path() / "locked");
    OpenToEverybody(directory.Path());

    ExpectNoDirectoryFor("/proc/self/missing/new.db"); // no user may create it
    ExpectNoDirectoryFor(directory.File("file/sub/new.db"));
    ExpectNoDirectoryFor(directory.File("loop/new.db"));
    ExpectNoDirectoryFor(directory.File(std::string(300, 'x') + "/new.db"));
    {
        const ScopedPermissions locked(directory.Path() / "locked", fs::perms::none);
        ExpectNoDirectoryFor(directory.File("locked/sub/new.db"));
    }
    {
        const ScopedPermissions readable(directory.Path(), ReadableDirectory);
        ExpectNoDirectoryFor(directory.File("sub/new.db"));
    }

    EXPECT_EQ(fs::file_size(directory.File("file")), 7U);
    EXPECT_TRUE(fs::is_empty(directory.Path() / "locked"));
    EXPECT_FALSE(fs::exists(directory.Path() / "sub"));
}

// Boost 1.74 ends the process if memory runs out while it creates an ancestor of the requested directory.
TEST_F(SqlDatabaseDirectoryTest, OutOfMemoryWhileCreatingAncestorsIsReported)
{
    const std::string path = directory.File("one/two/three/four/new.db");
    std::set<std::ptrdiff_t> levelsMade;
    int failures = 0;

    for (bool fired = true; fired; ++failures) {
        fs::remove_all(directory.Path() / "one");
        SqlDatabase database;
        bool opened = false;
        {
            const OomInjector failing(failures);
            EXPECT_NO_THROW(opened = database.Open(path, false));
            fired = failing.Fired();
        }
        EXPECT_EQ(opened, !fired) << "after " << failures << " allocations";
        EXPECT_THAT(database, HasError(fired ? 111 : 0, fired ? "Create directory failed: " + path : ""));
        EXPECT_EQ(fs::exists(path), !fired) << "after " << failures << " allocations";
        if (fired) {
            levelsMade.insert(std::distance(fs::recursive_directory_iterator(directory.Path()), {}));
        }
    }

    EXPECT_THAT(levelsMade, IsSupersetOf({0, 1, 2, 3})) << "memory must fail before each level is made";
    SqlDatabase database;
    EXPECT_TRUE(database.Open(path, false));
    EXPECT_TRUE(SqlCommand(database).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (7)"));
    EXPECT_TRUE(database.Close());
    EXPECT_EQ(ContentOf(path), (DatabaseContent{{"t", {{"7"}}}}));
}

// Runs the action in a new directory that an ordinary user may write to, as that user and with this umask. Returns the
// action's result and the directories that exist afterwards.
template <typename Action>
std::pair<bool, std::set<std::string>> DirectoriesAfter(mode_t mask, const Action& action)
{
    const TemporaryDirectory directory;
    fs::create_directory(directory.Path() / "here");
    const ScopedWorkingDirectory working(directory.Path() / "here");
    bool done = false;
    {
        OpenToEverybody(directory.Path());
        const ScopedPermissions ordinaryUser(directory.Path() / "here", fs::perms::all);
        const mode_t previous = umask(mask);
        done = action();
        umask(previous);
    }
    std::set<std::string> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
        if (entry.is_directory()) {
            found.insert(entry.path());
        }
    }
    return {done, found};
}

TEST_F(SqlDatabaseDirectoryTest, CreatesTheSameDirectoriesAsBoost)
{
    const std::string slashes(4095, '/');
    for (const mode_t mask : {mode_t{022}, mode_t{0333}}) {
        for (const std::string& path :
             {"./a/b/new.db"s, "../here/c/new.db"s, "../there/new.db"s, "d/../e/new.db"s, "f//g///h/new.db"s,
              "i/./j/new.db"s, ".k/new.db"s, ".../l/new.db"s, "m/.."s, "m/../n"s, "m/../o/new.db"s, "m/./"s, "m/."s,
              "m//"s, "sl" + slashes + "x.db", "sl" + slashes + "/y/x.db", "p/q" + slashes, "r/../../here/s/new.db"s}) {
            SCOPED_TRACE(path.substr(0, 20) + " under umask " + std::to_string(mask));
            const auto [opened, made] = DirectoriesAfter(mask, [&path] {
                SqlDatabase database;
                database.Open(path, false);
                return database.GetLastError() != 111;
            });

            const auto [created, expected] = DirectoriesAfter(mask, [&path] {
                const boost::filesystem::path parent = boost::filesystem::path(path).parent_path();
                try {
                    return boost::filesystem::exists(parent) || boost::filesystem::create_directories(parent) || true;
                } catch (const boost::filesystem::filesystem_error&) {
                    return false;
                }
            });

            EXPECT_EQ(opened, created);
            EXPECT_EQ(made, expected);
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
