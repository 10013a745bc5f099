#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>

#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/ScopedPermissions.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

namespace fs = std::filesystem;

class DatabaseFilePermissionTest : public testing::Test {
protected:
    DatabaseFilePermissionTest()
    {
        RawSqlite(path).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1)");
        OpenToEverybody(directory.Path());
    }

    void ExpectNothingLost() const { EXPECT_EQ(RawSqlite(path).Value("SELECT group_concat(a) FROM t"), "'1'"); }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseApi database;
};

TEST_F(DatabaseFilePermissionTest, FileInADirectoryClosedToWritersCannotBeMade)
{
    const std::string missing = directory.File("missing.db");
    {
        const ScopedPermissions readable(directory.Path(), ReadableDirectory);

        EXPECT_FALSE(database.OpenDatabase(missing, false));
        EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN)));
        EXPECT_FALSE(database.IsOpen());
    }

    EXPECT_TRUE(database.OpenDatabase(missing, false)) << "the same facade opens it once it may";
}

TEST_F(DatabaseFilePermissionTest, DirectoryThatCannotBeMadeIsNamedByTheDatabase)
{
    const std::string missing = directory.File("missing/x.db");
    const ScopedPermissions readable(directory.Path(), ReadableDirectory);

    for (const bool readOnly : {false, true}) {
        EXPECT_FALSE(database.OpenDatabase(missing, readOnly));
        EXPECT_THAT(database, HasError(111, "Create directory failed: " + missing));
        EXPECT_FALSE(database.IsOpen());
    }
}

TEST_F(DatabaseFilePermissionTest, DirectoryThatCannotBeLookedIntoIsNamedByTheDatabase)
{
    const std::string hidden = directory.File("inner/x.db");
    fs::create_directory(directory.File("inner"));
    const ScopedPermissions locked(directory.Path(), fs::perms::none);

    EXPECT_FALSE(database.OpenDatabase(hidden, true));

    EXPECT_THAT(database, HasError(111, "Create directory failed: " + hidden));
}

TEST_F(DatabaseFilePermissionTest, FileThatMayOnlyBeReadIsReadAndNotWritten)
{
    {
        const ScopedPermissions readable(path, ReadableFile);

        EXPECT_TRUE(database.OpenDatabase(path, false));
        EXPECT_FALSE(database.Execute("INSERT INTO t VALUES (2)"));
        EXPECT_THAT(database, HasError(SQLITE_READONLY, sqlite3_errstr(SQLITE_READONLY)));
        EXPECT_TRUE(database.Execute("SELECT a FROM t"));
        EXPECT_TRUE(database.CloseDatabase());
    }

    ExpectNothingLost();
}

TEST_F(DatabaseFilePermissionTest, FileThatMayNotBeReadCannotBeOpened)
{
    {
        const ScopedPermissions locked(path, fs::perms::none);

        for (const bool readOnly : {false, true}) {
            EXPECT_FALSE(database.OpenDatabase(path, readOnly));
            EXPECT_THAT(database, HasError(SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN)));
        }
    }

    ExpectNothingLost();
}

} // namespace

} // namespace Morvik::sql::tests
