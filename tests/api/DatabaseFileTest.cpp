#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <sqlite3.h>

#include "api/FacadeTest.h"
#include "support/DatabaseContent.h"
#include "support/ScopedPermissions.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// The files are ordinary SQLite files: SQLite's command-line program reads and writes them.

/// The output of the program for a command on a database; neither argument may contain an apostrophe.
std::string ProgramOutput(const std::string& path, const std::string& command)
{
    const std::string line =
        std::string("'" TKOSQLLITE_SQLITE3_PROGRAM "' -batch -bail '") + path + "' '" + command + "' 2>&1";
    FILE* const pipe = popen(line.c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot be started: " + line);
    }
    std::string output;
    for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe)) {
        output += static_cast<char>(byte);
    }
    if (pclose(pipe) != 0) {
        throw std::runtime_error("failed: " + line + "\n" + output);
    }
    return output;
}

using DatabaseFileFormatTest = OpenFacade;

TEST_F(DatabaseFileFormatTest, ProgramReadsWhatTheLibraryWrote)
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

    EXPECT_EQ(ProgramOutput(path, "PRAGMA integrity_check"), "ok\n");
    EXPECT_EQ(ProgramOutput(path, ".schema"), "CREATE TABLE person (id INTEGER ,name TEXT ,height REAL ,picture  );\n");
    EXPECT_EQ(ProgramOutput(path, "SELECT quote(id), quote(name), quote(height), quote(picture) FROM person"),
              "1|'Ann \"A\" O''''Brien'|1.5|X'00FF2227'\n"
              "-2147483648|'J\u00FCrgen'|123456.0|NULL\n"
              "3|'Eve'|-0.25|NULL\n");
}

// The content of the file after a facade was destroyed, and the use of a facade after a failed open.

class DatabaseFileTest : public testing::Test {
protected:
    DatabaseFileTest() { RawSqlite(path).Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 'one'), (2, NULL)"); }

    ~DatabaseFileTest() override
    {
        EXPECT_EQ(ContentOf(path), (DatabaseContent{{"t", {{"1", "'one'"}, {"2", "NULL"}}}})) << "something was lost";
    }

    void ExpectFailedOpen(const std::string& file, bool readOnly, int code, const std::string& message)
    {
        EXPECT_FALSE(database.OpenDatabase(file, readOnly));
        EXPECT_THAT(database, HasError(code, message));
        EXPECT_FALSE(database.IsOpen());
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseApi database;
};

TEST_F(DatabaseFileTest, DestructionDuringAWalkLosesNothing)
{
    DatabaseApi walking;
    ASSERT_TRUE(walking.OpenDatabase(path, false));
    ASSERT_TRUE(walking.Execute("DELETE FROM t WHERE a=2; INSERT INTO t VALUES (2, NULL)"));
    ASSERT_TRUE(walking.SqlQueryBegin("SELECT a FROM t"));
    ASSERT_NE(walking.begin(), walking.end());
}

TEST_F(DatabaseFileTest, DestructionDuringATransactionUndoesIt)
{
    DatabaseApi writing;
    ASSERT_TRUE(writing.OpenDatabase(path, false));
    ASSERT_TRUE(writing.Execute("BEGIN; DELETE FROM t"));
    ASSERT_TRUE(writing.WriteTableValues("t", {{"a"}, {{{IntegerCell(3)}}}}));
}

TEST_F(DatabaseFileTest, FailedOpenLeavesTheFacadeReadyForTheNextOpen)
{
    const std::string cannotOpen = sqlite3_errstr(SQLITE_CANTOPEN);
    const std::string hidden = directory.File("inner/x.db");
    OpenToEverybody(directory.Path());
    ExpectFailedOpen(directory.File("made/absent.db"), true, SQLITE_CANTOPEN, cannotOpen);
    EXPECT_TRUE(std::filesystem::is_empty(directory.File("made")));
    ExpectFailedOpen(path + "/below/x.db", false, 111, "Create directory failed: " + path + "/below/x.db");
    {
        const ScopedPermissions locked(path, std::filesystem::perms::none);
        ExpectFailedOpen(path, false, SQLITE_CANTOPEN, cannotOpen);
    }
    {
        const ScopedPermissions readable(directory.Path(), ReadableDirectory);
        ExpectFailedOpen(hidden, false, 111, "Create directory failed: " + hidden);
    }

    EXPECT_TRUE(database.OpenDatabase(hidden, false) && database.CloseDatabase()) << "it makes the directory";
    EXPECT_TRUE(database.OpenDatabase(path, false));
}

} // namespace

} // namespace Morvik::sql::tests
