#include <filesystem>
#include <string>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/ChildProcess.h"
#include "support/DatabaseContent.h"
#include "support/ScopedPermissions.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// The content of the file, and the use of a facade after a failed open.

using DatabaseFileTest = FacadeTest;

TEST_F(DatabaseFileTest, CommandLineProgramReadsWhatTheLibraryWrote)
{
    const DbTableDefinition person{"person",
                                   {{"id", DbTableColumnType::Integer},
                                    {"name", DbTableColumnType::Text},
                                    {"height", DbTableColumnType::Real},
                                    {"picture"}},
                                   {}};
    const unsigned char bytes[] = {0x00, 0xFF, '"', '\''};
    ASSERT_TRUE(database.CreateTable(person)) << database.GetLastErrorMsg();
    ASSERT_TRUE(database.WriteTableValues(
        "person", {{"id", "name", "height"},
                   {{{IntegerCell(1), TextCell("Ann \"A\" O'Brien"), RealCell(1.5)}},
                    {{IntegerCell(-2147483647 - 1), TextCell("J\u00FCrgen"), RealCell(123456.0)}},
                    {{IntegerCell(3), TextCell(""), RealCell(-0.25)}}}}));
    ASSERT_TRUE(database.UpdateTableValues("person", {{"name"}, {{{TextCell("Eve")}}}}, "WHERE id=3"));
    {
        SqlCommand picture = database.PrepareStatement("UPDATE person SET picture=? WHERE id=1");
        ASSERT_TRUE(picture.BindBlob(1, bytes) && picture.Step());
    }
    ASSERT_TRUE(database.CloseDatabase());

    const ChildResult read = RunChild({"sqlite3", "-batch", "-bail", path, "PRAGMA integrity_check", ".schema person",
                                       "SELECT quote(id), quote(name), quote(height), quote(picture) FROM person"});

    EXPECT_EQ(read.status, 0) << read.err;
    EXPECT_EQ(read.out, "ok\n"
                        "CREATE TABLE person (id INTEGER ,name TEXT ,height REAL ,picture  );\n"
                        "1|'Ann \"A\" O''''Brien'|1.5|X'00FF2227'\n"
                        "-2147483648|'J\u00FCrgen'|123456.0|NULL\n"
                        "3|'Eve'|-0.25|NULL\n");
}

TEST_F(DatabaseFileTest, DestructionDuringAWalkUndoesOnlyTheOpenTransaction)
{
    {
        DatabaseApi destroyed;
        ASSERT_TRUE(destroyed.OpenDatabase(path, false));
        ASSERT_TRUE(destroyed.Execute("DELETE FROM other WHERE a=1; BEGIN; DELETE FROM other"));
        ASSERT_TRUE(destroyed.WriteTableValues("other", {{"a"}, {{{IntegerCell(3)}}}}));
        ASSERT_TRUE(destroyed.SqlQueryBegin("SELECT a FROM t"));
        ASSERT_NE(destroyed.begin(), destroyed.end());
    }

    EXPECT_THAT(ContentOf(path).at("other"), ElementsAre(ElementsAre("2")));
}

TEST_F(DatabaseFileTest, FailedOpenLeavesTheFacadeReadyForTheNextOpen)
{
    const DatabaseContent content = ContentOf(path);
    const auto cannotOpen = FailedWith(SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN));
    const std::string hidden = directory.File("inner/x.db");
    const std::string below = path + "/below/x.db";
    ASSERT_TRUE(database.CloseDatabase());
    OpenToEverybody(directory.Path());

    EXPECT_THAT(database.OpenDatabase(directory.File("made/absent.db"), true), cannotOpen);
    EXPECT_FALSE(database.IsOpen());
    EXPECT_TRUE(std::filesystem::is_empty(directory.File("made")));
    EXPECT_THAT(database.OpenDatabase(below, false), FailedWith(111, "Create directory failed: " + below));
    EXPECT_FALSE(database.IsOpen());
    {
        const ScopedPermissions locked(path, std::filesystem::perms::none);
        EXPECT_THAT(database.OpenDatabase(path, false), cannotOpen);
    }
    {
        const ScopedPermissions readable(directory.Path(), ReadableDirectory);
        EXPECT_THAT(database.OpenDatabase(hidden, false), FailedWith(111, "Create directory failed: " + hidden));
    }
    EXPECT_TRUE(database.OpenDatabase(hidden, false) && database.CloseDatabase()) << "it makes the directory";
    EXPECT_TRUE(database.OpenDatabase(path, false));
    EXPECT_EQ(ContentOf(path), content);
}

} // namespace

} // namespace Morvik::sql::tests
