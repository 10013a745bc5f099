#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <string>

#include "examples/ExampleTest.h"
#include "support/DatabaseFiles.h"

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;
using testing::Not;

// A paragraph of a dpkg status file. `more` holds lines with optional fields.
std::string Paragraph(const std::string& name, const std::string& version = "1.0", const std::string& more = "")
{
    return "Package: " + name + "\nStatus: install ok installed\n" + more + "Architecture: all\nVersion: " + version +
           "\nDescription: something\n more: of it\n\n";
}

std::string ManyPackages(int count, const std::string& version)
{
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += Paragraph("p" + std::to_string(i), version, "Section: " + std::string(400, 's') + "\n");
    }
    return text;
}

class PackageInventoryTest : public ExampleTest {
protected:
    PackageInventoryTest() : ExampleTest("package_inventory") {}

    ChildResult RunOn(const std::string& statusText) const
    {
        WriteFile(statusFile, statusText);
        return Run({statusFile});
    }

    // The result of the integrity check, the names of the tables, and a summary of the packages.
    std::string Content() const
    {
        return Answer("PRAGMA integrity_check; SELECT name FROM sqlite_master;"
                      "SELECT count(*), min(version), max(version), sum(length(name)) FROM package");
    }

    const std::string statusFile = directory.File("status");
};

TEST_F(PackageInventoryTest, HoldsThePackagesThatDpkgQueryLists)
{
    const std::string format = "${db:Status-Status}|${Package}|${Architecture}|${Version}|${Section}|"
                               "${Installed-Size}|${binary:Summary}\\n";
    const std::string query =
        "SELECT 'installed', name, architecture, version, section, installed_size, summary FROM package";
    WriteFile(statusFile, FileContent("/var/lib/dpkg/status"));

    EXPECT_THAT(Run({statusFile}), SucceededQuietly());

    const ChildResult difference =
        RunChild({"sh", "-c",
                  "dpkg-query --admindir . -W -f \"$0\" | grep '^installed|' | sort >expected;"
                  "sqlite3 -batch -noheader \"$1\" \"$2\" | sort | diff expected -",
                  format, database, query},
                 {.directory = directory.Path().string()});
    EXPECT_EQ(difference.out + difference.err, "");
}

TEST_F(PackageInventoryTest, FirstRunReportsTheTableAndTheRows)
{
    const ChildResult result = RunOn(Paragraph("small", "1.0", "Installed-Size: 512\n") +
                                     Paragraph("large", "1.0", "Installed-Size: 2048\n") + Paragraph("unknown"));

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, HasSubstr("Database: " + database + "\nRows: 3, written in one transaction in "));
    EXPECT_THAT(result.out, HasSubstr("CREATE TABLE package (id INTEGER PRIMARY KEY,\n    name TEXT NOT NULL,\n"));
    EXPECT_THAT(result.out, HasSubstr("     2.0 MiB  large, something\n     0.5 MiB  small, something\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("Since the previous run")));
    EXPECT_EQ(Answer("SELECT name, typeof(section), typeof(installed_size) FROM package WHERE name = 'unknown'"),
              "unknown|null|null");
}

TEST_F(PackageInventoryTest, SecondRunReplacesTheRowsAndReportsChanges)
{
    ASSERT_THAT(RunOn(Paragraph("stays") + Paragraph("goes") + Paragraph("also-goes") + Paragraph("changes", "1.0")),
                SucceededQuietly());

    const ChildResult second = RunOn(Paragraph("stays") + Paragraph("comes") + Paragraph("changes", "1.1"));

    EXPECT_THAT(second, SucceededQuietly());
    EXPECT_THAT(second.out, HasSubstr("Since the previous run: 1 added, 2 removed, 1 in another version\n"));
    EXPECT_EQ(Answer("SELECT name, version FROM package; SELECT name FROM sqlite_master"),
              "stays|1.0\ncomes|1.0\nchanges|1.1\npackage");
}

TEST_F(PackageInventoryTest, KeepsApostrophesAndLeavesOutPackagesThatAreNotInstalled)
{
    EXPECT_THAT(RunOn("Package: gone\nStatus: deinstall ok config-files\n\n"
                      "Package: half\nStatus: install ok half-installed\n\n" +
                      Paragraph("quoted", "1.0", "Section: it's \"O''Brien\"'s\n")),
                SucceededQuietly());
    EXPECT_EQ(Answer("SELECT name, section FROM package"), "quoted|it's \"O''Brien\"'s");
}

TEST_F(PackageInventoryTest, KillLeavesTheOldOrTheNewRows)
{
    constexpr int Kills = 30;
    constexpr int Attempts = 300;
    ASSERT_THAT(RunOn(ManyPackages(3200, "2.0")), SucceededQuietly());
    const std::string later = Content();
    std::filesystem::remove(database);
    ASSERT_THAT(RunOn(ManyPackages(3000, "1.0")), SucceededQuietly());
    const std::string earlier = Content();
    ASSERT_NE(later, earlier);
    const std::string earlierFile = FileContent(database);
    WriteFile(statusFile, ManyPackages(3200, "2.0"));
    const std::vector<std::string> command = Command({statusFile});
    std::mt19937 random(20240229);
    std::uniform_int_distribution<long long> moment(0, DurationOf(command).count());

    int killed = 0;
    int killedWhileWriting = 0;
    for (int attempt = 0; attempt < Attempts && (killed < Kills || killedWhileWriting == 0); ++attempt) {
        WriteFile(database, earlierFile);
        killed += RunAndKill(command, std::chrono::microseconds(moment(random))).signal == SIGKILL ? 1 : 0;
        killedWhileWriting += LeftAJournal(database) ? 1 : 0;
        ASSERT_THAT(Content(), testing::AnyOf(earlier, later));
    }

    EXPECT_GE(killed, Kills);
    EXPECT_GT(killedWhileWriting, 0) << "no kill was between the first write and the commit";
}

TEST_F(PackageInventoryTest, PathThatIsNoDatabaseIsRejectedAndUnchanged)
{
    const std::string letter(3000, 'x');
    database = directory.File("letter.txt");
    WriteFile(database, letter);
    EXPECT_THAT(RunOn(Paragraph("a")),
                FailedWithOneLine(1, "cannot open " + database + ": file is not a database (code 26)"));
    EXPECT_EQ(FileContent(database), letter);

    database = "/proc/inventory.db";
    EXPECT_THAT(RunOn(Paragraph("a")), FailedWithOneLine(1, "unable to open database file (code 14)"));
    database = statusFile + "/below/inventory.db";
    EXPECT_THAT(RunOn(Paragraph("a")), FailedWithOneLine(1, "Create directory failed: " + database + " (code 111)"));
}

TEST_F(PackageInventoryTest, WrongArgumentsPrintTheUsage)
{
    ExpectUsage("usage: package_inventory DATABASE [STATUS-FILE]", {statusFile, "more"});
}

// Each test starts with an inventory and checks that the failed run left it unchanged.
class PackageInventoryFailureTest : public PackageInventoryTest {
protected:
    void SetUp() override
    {
        ASSERT_THAT(RunOn(Paragraph("earlier")), SucceededQuietly());
        earlier = Content();
    }

    void TearDown() override { EXPECT_EQ(Content(), earlier); }

    std::string earlier;
};

TEST_F(PackageInventoryFailureTest, RejectsAnEmptyOrMalformedStatusFile)
{
    const auto failed = FailedWithOneLine(1, "cannot read packages from " + statusFile);

    EXPECT_THAT(RunOn(""), failed);
    EXPECT_THAT(RunOn("just words\n"), failed);
    EXPECT_THAT(RunOn("Package: a\nStatus: install ok installed\nArchitecture: all\n"),
                FailedWithOneLine(1, "a package without the field Version"));
    EXPECT_THAT(RunOn(Paragraph("a", "1.0", "Installed-Size: much\n")),
                FailedWithOneLine(1, "a package of the size much"));
    std::filesystem::remove(statusFile);
    EXPECT_THAT(Run({statusFile}), failed);
    std::filesystem::create_directory(statusFile);
    EXPECT_THAT(Run({statusFile}), failed);
}

TEST_F(PackageInventoryFailureTest, FullDiskKeepsTheEarlierRows)
{
    WriteFile(statusFile, ManyPackages(3000, "2.0"));

    for (const int blocks : {1, 24, 100, 1000}) {
        EXPECT_THAT(RunOnAFullDisk(blocks, {statusFile}), FailedWithOneLine(1, "disk I/O error (code 10)")) << blocks;
    }
}

TEST_F(PackageInventoryFailureTest, ReportThatCannotBeWrittenIsAFailure)
{
    EXPECT_EQ(RunChild(Command({statusFile}), {.output = "/dev/full"}).status, 1);
}

} // namespace

} // namespace Morvik::sql::tests
