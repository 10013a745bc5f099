#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <string>

#include "examples/ExampleProgram.h"
#include "support/KilledProgram.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;
using testing::Not;

// A paragraph of a dpkg status file. `more` is lines of fields that a package may lack.
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

class PackageInventoryTest : public testing::Test {
protected:
    std::vector<std::string> Command() const { return ExampleCommand("package_inventory", {m_database, m_statusFile}); }

    ChildResult RunOn(const std::string& statusText) const
    {
        WriteFile(m_statusFile, statusText);
        return RunChild(Command());
    }

    std::string Answer(const std::string& sql) const { return AnswerOfSqlite3(m_database, sql); }

    // Whether the file passes the integrity check, its tables and a summary of its rows.
    std::string Content() const
    {
        return Answer("PRAGMA integrity_check; SELECT name FROM sqlite_master;"
                      "SELECT count(*), min(version), max(version), sum(length(name)) FROM package");
    }

    TemporaryDirectory m_directory;
    std::string m_statusFile = m_directory.File("status");
    std::string m_database = m_directory.File("missing directories/inventory.db");
};

TEST_F(PackageInventoryTest, HoldsThePackagesThatDpkgQueryLists)
{
    const std::string format = "${db:Status-Status}|${Package}|${Architecture}|${Version}|${Section}|"
                               "${Installed-Size}|${binary:Summary}\\n";
    WriteFile(m_statusFile, FileContent("/var/lib/dpkg/status"));
    const ChildResult expected =
        RunChild({"dpkg-query", "--admindir", m_directory.Path().string(), "-W", "-f", format});
    ASSERT_THAT(expected, SucceededQuietly());

    const ChildResult result = RunChild(Command());

    EXPECT_THAT(result, SucceededQuietly());
    WriteFile(m_directory.File("expected"), expected.out);
    WriteFile(m_directory.File("stored"),
              Answer("SELECT 'installed', name, architecture, version, section, installed_size, summary FROM package") +
                  "\n");
    const ChildResult difference =
        RunChild({"sh", "-c", "grep '^installed|' expected | sort >sorted && sort stored | diff sorted -"},
                 {.directory = m_directory.Path().string()});
    EXPECT_EQ(difference.out + difference.err, "");
}

TEST_F(PackageInventoryTest, FirstRunReportsTheTableAndTheRows)
{
    const ChildResult result = RunOn(Paragraph("small", "1.0", "Installed-Size: 512\n") +
                                     Paragraph("large", "1.0", "Installed-Size: 2048\n") + Paragraph("unknown"));

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, HasSubstr("Database: " + m_database + "\nRows: 3, written in one transaction in "));
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

TEST_F(PackageInventoryTest, KeepsApostrophesAsTheyAre)
{
    EXPECT_THAT(RunOn(Paragraph("quoted", "1.0", "Section: it's \"O''Brien\"'s\n")), SucceededQuietly());

    EXPECT_EQ(Answer("SELECT section FROM package"), "it's \"O''Brien\"'s");
}

TEST_F(PackageInventoryTest, LeavesOutPackagesThatAreNotInstalled)
{
    EXPECT_THAT(RunOn("Package: gone\nStatus: deinstall ok config-files\n\n"
                      "Package: half\nStatus: install ok half-installed\n\n" +
                      Paragraph("here")),
                SucceededQuietly());

    EXPECT_EQ(Answer("SELECT name FROM package"), "here");
}

TEST_F(PackageInventoryTest, KillLeavesTheOldOrTheNewRows)
{
    constexpr int Kills = 30;
    constexpr int Attempts = 300;
    ASSERT_THAT(RunOn(ManyPackages(3200, "2.0")), SucceededQuietly());
    const std::string later = Content();
    std::filesystem::remove(m_database);
    ASSERT_THAT(RunOn(ManyPackages(3000, "1.0")), SucceededQuietly());
    const std::string earlier = Content();
    ASSERT_NE(later, earlier);
    const std::string earlierFile = FileContent(m_database);
    WriteFile(m_statusFile, ManyPackages(3200, "2.0"));
    const std::chrono::microseconds duration = DurationOf(Command());

    int killed = 0;
    int killedWhileWriting = 0;
    std::mt19937 random(20240229);
    std::uniform_int_distribution<long long> moment(0, duration.count());
    for (int attempt = 0; attempt < Attempts && (killed < Kills || killedWhileWriting == 0); ++attempt) {
        WriteFile(m_database, earlierFile);
        const ChildResult result = RunAndKill(Command(), std::chrono::microseconds(moment(random)));
        killed += result.signal == SIGKILL ? 1 : 0;
        killedWhileWriting += LeftAJournal(m_database) ? 1 : 0;

        const std::string left = Content();

        ASSERT_TRUE(left == earlier || left == later) << left;
    }

    EXPECT_GE(killed, Kills);
    EXPECT_GT(killedWhileWriting, 0) << "no kill was between the first write and the commit";
}

TEST_F(PackageInventoryTest, TextFileIsRejectedAndUnchanged)
{
    const std::string letter(3000, 'x');
    m_database = m_directory.File("letter.txt");
    WriteFile(m_database, letter);

    EXPECT_THAT(RunOn(Paragraph("a")),
                FailedWithOneLine(1, "cannot open " + m_database + ": file is not a database (code 26)"));
    EXPECT_EQ(FileContent(m_database), letter);
}

TEST_F(PackageInventoryTest, PathThatCannotBeOpenedIsRejected)
{
    m_database = "/proc/inventory.db";
    EXPECT_THAT(RunOn(Paragraph("a")), FailedWithOneLine(1, "unable to open database file (code 14)"));

    m_database = m_statusFile + "/below/inventory.db";
    EXPECT_THAT(RunOn(Paragraph("a")), FailedWithOneLine(1, "Create directory failed: " + m_database + " (code 111)"));
}

TEST_F(PackageInventoryTest, WrongArgumentsPrintTheUsage)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"--help"}, {m_database, m_statusFile, "more"}}) {
        EXPECT_THAT(RunChild(ExampleCommand("package_inventory", arguments)),
                    FailedWithOneLine(2, "usage: package_inventory DATABASE [STATUS-FILE]"));
    }
}

// Each test starts with an inventory and checks that the failed run left it unchanged.
class PackageInventoryFailureTest : public PackageInventoryTest {
protected:
    void SetUp() override
    {
        ASSERT_THAT(RunOn(Paragraph("earlier")), SucceededQuietly());
        m_earlier = Content();
    }

    void TearDown() override { EXPECT_EQ(Content(), m_earlier); }

    std::string m_earlier;
};

TEST_F(PackageInventoryFailureTest, RejectsAStatusFileWithoutPackages)
{
    EXPECT_THAT(RunOn(""), FailedWithOneLine(1, "cannot read packages from " + m_statusFile));
    EXPECT_THAT(RunOn("just words\n"), FailedWithOneLine(1, "cannot read packages from " + m_statusFile));

    std::filesystem::remove(m_statusFile);
    EXPECT_THAT(RunChild(Command()), FailedWithOneLine(1, "cannot read packages from " + m_statusFile));
    std::filesystem::create_directory(m_statusFile);
    EXPECT_THAT(RunChild(Command()), FailedWithOneLine(1, "cannot read packages from " + m_statusFile));
}

TEST_F(PackageInventoryFailureTest, RejectsAPackageWithAMissingOrWrongField)
{
    EXPECT_THAT(RunOn("Package: a\nStatus: install ok installed\nArchitecture: all\n"),
                FailedWithOneLine(1, "a package without the field Version"));
    EXPECT_THAT(RunOn(Paragraph("a", "1.0", "Installed-Size: much\n")),
                FailedWithOneLine(1, "a package of the size much"));
}

TEST_F(PackageInventoryFailureTest, FullDiskKeepsTheEarlierRows)
{
    WriteFile(m_statusFile, ManyPackages(3000, "2.0"));

    for (const int blocks : {1, 24, 100, 1000}) {
        EXPECT_THAT(RunChild(WithFileSizeLimit(blocks, Command())), FailedWithOneLine(1, "disk I/O error (code 10)"))
            << blocks;
    }
}

TEST_F(PackageInventoryFailureTest, ReportThatCannotBeWrittenIsAFailure)
{
    EXPECT_EQ(RunChild(Command(), {.output = "/dev/full"}).status, 1);
}

} // namespace

} // namespace Morvik::sql::tests
