#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/DatabaseContent.h"
#include "support/FailingAllocation.h"
#include "support/HasRecord.h"
#include "support/RecordedSqlite.h"
#include "support/ScopedPermissions.h"
#include "support/ScopedWorkingDirectory.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

// Parent directories that can be neither found nor created.
class SqlDatabaseDirectoryTest : public testing::Test {
protected:
    // The failure of the directory step, which is told from SQLite's by its message and by SQLite not being asked.
    static void ExpectNoDirectoryFor(const std::string& path)
    {
        for (const bool readOnly : {false, true}) {
            SqlDatabase database;
            const RecordedSqlite sqlite;

            const bool opened = database.Open(path, readOnly);

            EXPECT_FALSE(opened);
            EXPECT_THAT(database, HasRecord(111, "Create directory failed: " + path));
            EXPECT_FALSE(database.IsOpen());
            EXPECT_THAT(sqlite.Calls(), IsEmpty());
        }
    }

    const TemporaryDirectory directory;
};

TEST_F(SqlDatabaseDirectoryTest, FileAmongTheAncestorsLeavesNoDirectoryToCreate)
{
    std::ofstream(directory.File("file")) << "content";

    ExpectNoDirectoryFor(directory.File("file/sub/new.db"));

    EXPECT_EQ(fs::file_size(directory.File("file")), 7U);
}

TEST_F(SqlDatabaseDirectoryTest, DirectoryThatNobodyMayCreateIsReportedWithTheWholePath)
{
    ExpectNoDirectoryFor("/proc/self/missing/new.db");
}

TEST_F(SqlDatabaseDirectoryTest, DirectoryThatCannotBeInspectedIsReportedWithTheWholePath)
{
    fs::create_symlink("loop", directory.Path() / "loop");

    ExpectNoDirectoryFor(directory.File("loop/new.db"));
    ExpectNoDirectoryFor(directory.File(std::string(300, 'x') + "/new.db"));
}

TEST_F(SqlDatabaseDirectoryTest, DirectoryWithoutPermissionCannotBeInspected)
{
    OpenToEverybody(directory.Path());
    fs::create_directory(directory.Path() / "locked");
    const ScopedPermissions locked(directory.Path() / "locked", fs::perms::none);

    ExpectNoDirectoryFor(directory.File("locked/sub/new.db"));
}

TEST_F(SqlDatabaseDirectoryTest, DirectoryWithoutPermissionCannotBeCreated)
{
    OpenToEverybody(directory.Path());
    {
        const ScopedPermissions readable(directory.Path(), ReadableDirectory);
        ExpectNoDirectoryFor(directory.File("sub/new.db"));
    }
    EXPECT_TRUE(fs::is_empty(directory.Path()));
}

// Boost ends the process when it has no memory while it makes an ancestor of what it is asked for.
TEST_F(SqlDatabaseDirectoryTest, MissingAncestorsWithoutMemoryAreReportedLikeAnyOther)
{
    const std::string path = directory.File("one/two/three/four/new.db");
    int failures = 0;

    for (bool fired = true; fired; ++failures) {
        fs::remove_all(directory.Path() / "one");
        SqlDatabase database;
        bool opened = false;
        {
            const FailingAllocation failing(failures);
            EXPECT_NO_THROW(opened = database.Open(path, false));
            fired = failing.Fired();
        }
        EXPECT_EQ(opened, !fired) << "after " << failures << " allocations";
        EXPECT_THAT(database, HasRecord(fired ? 111 : 0, fired ? "Create directory failed: " + path : ""));
        EXPECT_EQ(fs::exists(path), !fired) << "after " << failures << " allocations";
    }

    EXPECT_GT(failures, 8) << "too few allocations failed";
    SqlDatabase database;
    EXPECT_TRUE(database.Open(path, false));
    EXPECT_TRUE(SqlCommand(database).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (7)"));
    EXPECT_TRUE(database.Close());
    EXPECT_EQ(ContentOf(path), (DatabaseContent{{"t", {{"7"}}}}));
}

TEST_F(SqlDatabaseDirectoryTest, MissingDirectoriesMayBeNamedWithDotsAndManySlashes)
{
    fs::create_directory(directory.Path() / "here");
    const ScopedWorkingDirectory working(directory.Path() / "here");

    for (const char* const path : {"./a/b/new.db", "../here/c/new.db", "../there/new.db", "d/../e/new.db",
                                   "f//g///h/new.db", "i/./j/new.db", ".k/new.db", ".../l/new.db"}) {
        SqlDatabase database;

        const bool opened = database.Open(path, false);

        EXPECT_TRUE(opened) << path;
        EXPECT_THAT(database, HasRecord(0, "")) << path;
        EXPECT_TRUE(fs::is_regular_file(path)) << path;
    }
}

TEST_F(SqlDatabaseDirectoryTest, OpenAfterAFailedDirectoryStepSucceeds)
{
    SqlDatabase database;
    database.Open("/proc/self/missing/new.db", false);
    ASSERT_EQ(database.GetLastError(), 111);

    const bool opened = database.Open(directory.File("new.db"), false);

    EXPECT_TRUE(opened);
    EXPECT_THAT(database, HasRecord(0, ""));
}

} // namespace

} // namespace Morvik::sql::tests
