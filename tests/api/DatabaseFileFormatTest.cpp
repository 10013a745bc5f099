#include <gmock/gmock.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "support/Cells.h"
#include "support/OpenFacade.h"

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
    const std::string bytes("\x00\xFF\"'", 4);
    ASSERT_TRUE(database.CreateTable(person)) << database.GetLastErrorMsg();
    ASSERT_TRUE(database.WriteTableValues(
        "person", {{"id", "name", "height"},
                   {{{IntegerCell(1), TextCell("Ann \"A\" O'Brien"), RealCell(1.5)}},
                    {{IntegerCell(-2147483647 - 1), TextCell("J\u00FCrgen"), RealCell(123456.0)}},
                    {{IntegerCell(3), TextCell(""), RealCell(-0.25)}}}}));
    ASSERT_TRUE(database.UpdateTableValues("person", {{"name"}, {{{TextCell("Eve")}}}}, "WHERE id=3"));
    {
        SqlCommand picture = database.PrepareStatement("UPDATE person SET picture=? WHERE id=1");
        const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
        ASSERT_TRUE(picture.BindBlob(1, {data, bytes.size()}) && picture.Step());
    }
    ASSERT_TRUE(database.CloseDatabase());

    EXPECT_EQ(ProgramOutput(path, "PRAGMA integrity_check"), "ok\n");
    EXPECT_EQ(ProgramOutput(path, ".schema"), "CREATE TABLE person (id INTEGER ,name TEXT ,height REAL ,picture  );\n");
    EXPECT_EQ(ProgramOutput(path, "SELECT quote(id), quote(name), quote(height), quote(picture) FROM person"),
              "1|'Ann \"A\" O''''Brien'|1.5|X'00FF2227'\n"
              "-2147483648|'J\u00FCrgen'|123456.0|NULL\n"
              "3|'Eve'|-0.25|NULL\n");
}

TEST_F(DatabaseFileFormatTest, LibraryReadsWhatTheProgramWrote)
{
    DbTableData data;
    ProgramOutput(path,
                  "CREATE TABLE t (a, b, c, d, e); "
                  "INSERT INTO t VALUES (7, 0.125, \"text\", zeroblob(2), NULL), (-1, 1e300, \"\", zeroblob(0), 8)");

    EXPECT_TRUE(database.ReadTableValues("t", data)) << database.GetLastErrorMsg();

    EXPECT_THAT(CellTexts(data),
                ElementsAre(ElementsAre("0:Integer int(7)", "1:Real double(0.125)", "2:Text string(text)",
                                        "3:Blob bytes(0000)", "4:None string()"),
                            ElementsAre("0:Integer int(-1)", "1:Real double(1e+300)", "2:Text string()",
                                        "3:Blob bytes()", "4:Integer int(8)")));
}

TEST_F(DatabaseFileFormatTest, FileEqualsOneThatTheProgramWrote)
{
    const std::string other = directory.File("other.db");
    const std::string table = "CREATE TABLE t (a INTEGER, b TEXT)";
    ProgramOutput(other, table + "; INSERT INTO t VALUES (1, \"one\"), (2, \"two\")");

    ASSERT_TRUE(database.Execute(table));
    ASSERT_TRUE(database.WriteTableValues(
        "t", {{}, {{{IntegerCell(1), TextCell("one")}}, {{IntegerCell(2), TextCell("two")}}}}));
    ASSERT_TRUE(database.CloseDatabase());

    const std::string dump = ProgramOutput(path, ".dump");
    EXPECT_THAT(dump, testing::HasSubstr("INSERT INTO t VALUES(2,'two');"));
    EXPECT_EQ(dump, ProgramOutput(other, ".dump"));
}

} // namespace

} // namespace Morvik::sql::tests
