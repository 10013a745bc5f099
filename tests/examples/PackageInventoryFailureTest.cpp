#include <filesystem>

#include "examples/InventoryTest.h"
#include "support/PlainSqlite.h"

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;

// Begins every test with an inventory of one package, and looks at its end whether that is still there, whole.
class InventoryFailureTest : public InventoryTest {
protected:
    void SetUp() override
    {
        ASSERT_THAT(RunOn(StatusEntry{"earlier"}.Text()), SucceededQuietly());
        m_earlier = WholeInventory();
    }

    void TearDown() override { EXPECT_EQ(WholeInventory(), m_earlier); }

    std::vector<std::string> CommandInto(const std::string& database) const
    {
        return ExampleCommand("package_inventory", {"--database", database, StatusFile()});
    }

    std::string m_earlier;
};

struct MalformedCase {
    const char* name;
    std::string text;
    const char* complaint;
};

class MalformedStatusTest : public InventoryFailureTest, public testing::WithParamInterface<MalformedCase> {};

TEST_P(MalformedStatusTest, EndsInOneLineAndLeavesTheEarlierInventory)
{
    const ChildResult result = RunOn(GetParam().text);

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", StatusFile() + GetParam().complaint));
}

const std::string Good = StatusEntry{"good"}.Text();

INSTANTIATE_TEST_SUITE_P(
    Texts, MalformedStatusTest,
    testing::Values(
        MalformedCase{"Empty", "", ""}, //
        MalformedCase{"OnlyEmptyLines", "\n\n\n", ""},
        MalformedCase{"NothingInstalled", "Package: a\nStatus: purge ok not-installed\n", ""},
        MalformedCase{"NoColon", Good + "just some words\n", ", line 10: a field begins with its name and a colon"},
        MalformedCase{"NoFieldName", Good + ": value\n", ", line 10: a field begins with its name and a colon"},
        MalformedCase{"CutWithinAFieldName", Good + "Package: a\nStat", ", line 11: a field begins with its name"},
        MalformedCase{"CutBeforeTheVersion", Good + "Package: a\nStatus: install ok installed\n",
                      ", line 11: a package without the field Version"},
        MalformedCase{"ContinuesNothing", " a line\n", ", line 1: this line continues no field"},
        MalformedCase{"BlankLineWithinAField", "Package: a\n  \n", ", line 2: a blank line within a field"},
        MalformedCase{"NoPackage", Good + "Status: install ok installed\nVersion: 1\n\n",
                      ", line 12: a package without the field Package"},
        MalformedCase{"NoStatus", "Package: a\nVersion: 1\n", ", line 2: a package without the field Status"},
        MalformedCase{"TwoWordStatus", "Package: a\nStatus: install ok\n", ", line 2: \"install ok\" is no status"},
        MalformedCase{"FourWordStatus", "Package: a\nStatus: install ok installed too\n", ", line 2: "},
        MalformedCase{"UnknownStatus", "Package: a\nStatus: install ok perhaps\n", ", line 2: "},
        MalformedCase{"SizeInWords", StatusEntry{"a", "1", "much"}.Text(), ", line 9: \"much\" is no installed size"},
        MalformedCase{"NegativeSize", StatusEntry{"a", "1", "-1"}.Text(), ", line 9: \"-1\" is no installed size"},
        MalformedCase{"SizeBeyond64Bits", StatusEntry{"a", "1", "9223372036854775808"}.Text(), ", line 9: "},
        MalformedCase{"FieldTwice", "Package: a\nPackage: b\n", ", line 2: a second Package of the same package"},
        MalformedCase{"PackageTwice", Good + Good, ", line 18: a second package good"},
        MalformedCase{"ZeroByte", Good + std::string("Package: a\0b\n", 13), ": it holds a zero byte"}),
    [](const auto& malformed) { return malformed.param.name; });

TEST_F(InventoryFailureTest, MissingStatusFileEndsInOneLine)
{
    const ChildResult result = RunChild(Command({m_directory.File("absent")}));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "/absent: No such file or directory"));
}

TEST_F(InventoryFailureTest, DirectoryInPlaceOfTheStatusFileEndsInOneLine)
{
    const ChildResult result = RunChild(Command({m_directory.Path().string()}));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", ": Is a directory"));
}

TEST_F(InventoryFailureTest, DeviceInPlaceOfTheStatusFileEndsInOneLine)
{
    const ChildResult result = RunChild(Command({"/dev/zero"}));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "malformed status file /dev/zero"));
}

TEST_F(InventoryFailureTest, FileInTheWayOfTheDirectoryEndsInOneLineWithCodeAndMessage)
{
    const std::string path = StatusFile() + "/below/inventory.db";

    const ChildResult result = RunChild(CommandInto(path));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "Create directory failed: " + path + " (code 111)"));
}

TEST_F(InventoryFailureTest, DirectoryThatTakesNoFilesEndsInOneLineWithCodeAndMessage)
{
    const ChildResult result = RunChild(CommandInto("/proc/inventory.db"));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "unable to open database file (code 14)"));
}

TEST_F(InventoryFailureTest, DirectoryInPlaceOfTheDatabaseEndsInOneLine)
{
    const ChildResult result = RunChild(CommandInto(m_directory.Path().string()));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "it is no regular file"));
}

TEST_F(InventoryFailureTest, DeviceInPlaceOfTheDatabaseEndsInOneLineAndLeavesNothingBesideIt)
{
    const ChildResult result = RunChild(CommandInto("/dev/full"));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "it is no regular file"));
    EXPECT_FALSE(std::filesystem::exists("/dev/full-journal"));
}

TEST_F(InventoryFailureTest, FileThatIsNoDatabaseEndsInOneLineAndStaysAsItIs)
{
    const std::string path = m_directory.File("letter.txt");
    const std::string letter(3000, 'x');
    WriteFile(path, letter);

    const ChildResult result = RunChild(CommandInto(path));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", path + ": file is not a database (code 26)"));
    EXPECT_EQ(FileContent(path), letter);
}

TEST_F(InventoryFailureTest, DatabaseOfAnotherProgramEndsInOneLineAndStaysAsItIs)
{
    const std::string path = m_directory.File("other.db");
    PlainSqlite(path).Execute("CREATE TABLE package (weight REAL); INSERT INTO package VALUES (2.5)");
    const std::string content = FileContent(path);

    const ChildResult result = RunChild(CommandInto(path));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "it is the database of another program"));
    EXPECT_EQ(FileContent(path), content);
}

TEST_F(InventoryFailureTest, RunDuringAnotherOneEndsInOneLine)
{
    PlainSqlite other(m_database);
    other.Execute("BEGIN IMMEDIATE");

    const ChildResult result = RunChild(CommandInto(m_database));

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "database is locked (code 5)"));
}

TEST_F(InventoryFailureTest, ReportThatCannotBeWrittenEndsInOneLine)
{
    const ChildResult result = RunChild(CommandInto(m_database), {.output = "/dev/full"});

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", "cannot write the report"));
}

class FullDiskTest : public InventoryFailureTest, public testing::WithParamInterface<int> {};

// The limit on the size of a file stops the program's writes where a disk of that size would.
TEST_P(FullDiskTest, EndsInOneLineAndLeavesTheEarlierInventory)
{
    WriteFile(StatusFile(), ManyPackages(2000, "2.0"));
    std::vector<std::string> command = {"sh", "-c",
                                        "ulimit -f " + std::to_string(GetParam()) + " && exec \"$0\" \"$@\""};
    const std::vector<std::string> program = Command({StatusFile()});
    command.insert(command.end(), program.begin(), program.end());

    const ChildResult result = RunChild(command);

    EXPECT_THAT(result, FailedWithOneLine(1, "package_inventory", m_database));
    EXPECT_THAT(result.err, HasSubstr("disk I/O error (code 10)"));
}

INSTANTIATE_TEST_SUITE_P(HalfKibibytes, FullDiskTest, testing::Values(1, 24, 100, 1000),
                         testing::PrintToStringParamName());

struct InventoryUsageCase {
    const char* name;
    std::vector<std::string> arguments;
    const char* complaint;
};

class InventoryUsageTest : public testing::TestWithParam<InventoryUsageCase> {};

TEST_P(InventoryUsageTest, EndsInOneLineAndStatusTwo)
{
    const ChildResult result = RunChild(ExampleCommand("package_inventory", GetParam().arguments));

    EXPECT_THAT(result, FailedWithOneLine(2, "package_inventory", GetParam().complaint));
}

INSTANTIATE_TEST_SUITE_P(CommandLines, InventoryUsageTest,
                         testing::Values(InventoryUsageCase{"UnknownOption", {"--fast"}, "--fast is no option"},
                                         InventoryUsageCase{"NoValue", {"--database"}, "--database needs a value"},
                                         InventoryUsageCase{
                                             "EmptyPath", {"--database", ""}, "--database needs the path"},
                                         InventoryUsageCase{"TwoStatusFiles", {"a", "b"}, "one status file at most"}),
                         [](const auto& usage) { return usage.param.name; });

} // namespace

} // namespace Morvik::sql::tests
