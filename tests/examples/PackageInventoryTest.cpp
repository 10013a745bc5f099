#include "examples/InventoryTest.h"

#include <algorithm>
#include <sstream>

namespace Morvik::sql::tests {

namespace {

using testing::HasSubstr;
using testing::Not;

// What dpkg-query lists of every package.
std::string DpkgQuery(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {"dpkg-query", "-W"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const ChildResult result = RunChild(command);
    EXPECT_EQ(result.status, 0) << result.err;
    return result.out;
}

std::vector<std::string> SortedRecords(const std::string& text, const std::string& end)
{
    std::vector<std::string> records;
    for (std::size_t begin = 0, found = 0; (found = text.find(end, begin)) != std::string::npos;
         begin = found + end.size()) {
        records.push_back(text.substr(begin, found - begin));
    }
    std::ranges::sort(records);
    return records;
}

long long SumOfLines(const std::string& text)
{
    std::istringstream lines(text);
    long long sum = 0;
    for (std::string line; std::getline(lines, line);) {
        sum += line.empty() ? 0 : std::stoll(line);
    }
    return sum;
}

// What dpkg-query says of all packages together, and what the inventory is to say.
struct Totals {
    long long packages;
    long long size;

    bool operator==(const Totals&) const = default;
};

Totals DpkgTotals()
{
    return {std::ranges::count(DpkgQuery({}), '\n'), SumOfLines(DpkgQuery({"-f", "${Installed-Size}\\n"}))};
}

TEST_F(InventoryTest, HoldsAsManyPackagesOfThisMachineAsDpkgQueryListsAndTheSameTotalSize)
{
    Totals expected = {};
    ChildResult result;
    do { // once more if something was installed meanwhile
        expected = DpkgTotals();
        result = RunChild(Command());
    } while (DpkgTotals() != expected);

    EXPECT_THAT(result, SucceededQuietly());
    const std::string packages = std::to_string(expected.packages);
    const std::string size = std::to_string(expected.size);
    EXPECT_GT(expected.packages, 0);
    EXPECT_EQ(Answer("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(Answer("SELECT count(*), sum(installed_size) FROM package"), packages + "|" + size);
    EXPECT_THAT(result.out, HasSubstr("Inventory of /var/lib/dpkg/status in " + m_database + "\n"));
    EXPECT_THAT(result.out, HasSubstr("  " + packages + " packages take "));
    EXPECT_THAT(result.out, HasSubstr("(" + size + " KiB)"));
}

TEST_F(InventoryTest, HoldsEveryTextOfThisMachinesPackagesAsDpkgQueryTellsIt)
{
    WriteFile(StatusFile(), FileContent("/var/lib/dpkg/status"));
    const std::string format = "${Package}\t${Architecture}\t${Version}\t${Section}\t${db:Status-Status}\t"
                               "${Description}\x1e\\n";
    const std::vector<std::string> expected =
        SortedRecords(DpkgQuery({"--admindir", m_directory.Path().string(), "-f", format}), "\x1e\n");

    const ChildResult result = RunChild(Command({StatusFile()}));

    EXPECT_THAT(result, SucceededQuietly());
    const std::string stored = Answer("SELECT name || char(9) || architecture || char(9) || version || char(9) || "
                                      "section || char(9) || state || char(9) || description || char(30) FROM package");
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(SortedRecords(stored + '\n', "\x1e\n"), expected);
}

TEST_F(InventoryTest, KeepsQuotesApostrophesAndUtf8AsTheyStandInTheStatusFile)
{
    const std::string description = "it's a \"Héctor\" 陳's O''Brien'\n second line's\n .\n end'";
    StatusEntry entry{"quoted"};
    entry.description = description;

    const ChildResult result = RunOn(entry.Text());

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT description FROM package"), description);
    EXPECT_THAT(result.out, HasSubstr("it's a \"Héctor\" 陳's O''Brien'\n"));
}

TEST_F(InventoryTest, AddsUpSizesBeyond32Bits)
{
    const std::string text =
        StatusEntry{"huge", "1", "3000000000"}.Text() + StatusEntry{"big", "1", "2147483647"}.Text();

    const ChildResult result = RunOn(text);

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT typeof(installed_size), installed_size FROM package ORDER BY id"),
              "integer|3000000000\ninteger|2147483647");
    EXPECT_THAT(result.out, HasSubstr("2 packages take 5026839.5 MiB (5147483647 KiB)"));
    EXPECT_THAT(result.out, HasSubstr("huge     2929687.5 MiB  ########################  something\n"));
}

TEST_F(InventoryTest, CountsRemovedPackagesThatLeftTheirConfigurationAsDpkgQueryDoes)
{
    StatusEntry left{"left"};
    left.status = "deinstall ok config-files";
    StatusEntry gone{"gone"};
    gone.status = "purge ok not-installed";
    const std::string text = StatusEntry{"here"}.Text() + left.Text() + gone.Text();
    WriteFile(StatusFile(), text);

    const ChildResult result = RunOn(text);

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT name, state FROM package ORDER BY id"), "here|installed\nleft|config-files");
    EXPECT_EQ(DpkgQuery({"--admindir", m_directory.Path().string(), "-f", "${Package}\\n"}), "here\nleft\n");
    EXPECT_THAT(result.out, HasSubstr("not wholly installed, or removed with the configuration left: 1\n"));
}

TEST_F(InventoryTest, MarksTheTenLargestAndShowsThemLargestFirst)
{
    std::string text;
    for (int i = 0; i < 30; ++i) {
        text += StatusEntry{"p" + std::to_string(i), "1", std::to_string(1024 * (i * 7 % 30))}.Text();
    }

    const ChildResult result = RunOn(text);

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(Answer("SELECT count(*), min(installed_size) / 1024, max(installed_size) / 1024 "
                     "FROM package WHERE mark = 'largest'"),
              "10|20|29");
    EXPECT_THAT(result.out, HasSubstr("The 10 largest packages\n"
                                      "  package      size                            what it is\n"
                                      "  p17      29.0 MiB  ########################  something\n"
                                      "  p4       28.0 MiB  ########################  something\n"
                                      "  p21      27.0 MiB  #######################   something\n"));
}

TEST_F(InventoryTest, CountsPackagesPerSectionAndPerSize)
{
    StatusEntry libs{"a", "1", "99"};
    libs.section = "libs";
    StatusEntry more{"b", "1", "100"};
    more.section = "libs";
    StatusEntry none{"c", "1", "102400"};
    none.section = "";

    const ChildResult result = RunOn(libs.Text() + more.Text() + none.Text());

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_THAT(result.out, HasSubstr("  libs            2  ########################    0.2 MiB\n"
                                      "  (none)          1  ############              100.0 MiB\n"));
    EXPECT_THAT(result.out, HasSubstr("  below 100 KiB            1  ########################\n"
                                      "  100 KiB to 1 MiB         1  ########################\n"
                                      "  1 to 10 MiB              0\n"
                                      "  10 to 100 MiB            0\n"
                                      "  100 MiB and more         1  ########################\n"));
}

TEST_F(InventoryTest, SecondRunReplacesTheInventoryAndTellsWhatChanged)
{
    const ChildResult first =
        RunOn(StatusEntry{"stays"}.Text() + StatusEntry{"goes"}.Text() + StatusEntry{"changes", "1.0"}.Text());
    Answer("UPDATE package SET recorded = 5");

    const ChildResult second =
        RunOn(StatusEntry{"stays"}.Text() + StatusEntry{"comes"}.Text() + StatusEntry{"changes", "1.1"}.Text());

    EXPECT_THAT(first, SucceededQuietly());
    EXPECT_THAT(first.out, Not(HasSubstr("Since the last inventory")));
    EXPECT_THAT(second, SucceededQuietly());
    EXPECT_THAT(second.out, HasSubstr("Since the last inventory: 1 new, 1 gone, 1 in another version\n"));
    EXPECT_EQ(Answer("SELECT name, version, recorded = 5 FROM package ORDER BY name"),
              "changes|1.1|0\ncomes|1.0|0\nstays|1.0|1");
    EXPECT_EQ(Answer("PRAGMA integrity_check; SELECT name FROM sqlite_master"), "ok\npackage");
}

TEST_F(InventoryTest, SecondRunOnTheSamePackagesChangesNothing)
{
    const std::string packages = FileContent("/var/lib/dpkg/status");
    const ChildResult first = RunOn(packages);
    const std::string inventory = WholeInventory();

    const ChildResult second = RunOn(packages);

    EXPECT_THAT(first, SucceededQuietly());
    EXPECT_THAT(second, SucceededQuietly());
    EXPECT_EQ(WholeInventory(), inventory);
    EXPECT_EQ(second.out, first.out + "\nSince the last inventory: 0 new, 0 gone, 0 in another version\n");
}

TEST(PackageInventoryTest, KeepsTheInventoryBelowTheHomeDirectoryUnlessToldOtherwise)
{
    const TemporaryDirectory home;
    std::vector<std::string> command = {"env", "-u", "XDG_DATA_HOME", "HOME=" + home.Path().string()};
    const std::vector<std::string> program = ExampleCommand("package_inventory", {});
    command.insert(command.end(), program.begin(), program.end());

    const ChildResult result = RunChild(command);

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(AnswerOfSqlite3(home.File(".local/share/package_inventory/inventory.db"), "PRAGMA integrity_check"),
              "ok");
}

} // namespace

} // namespace Morvik::sql::tests
