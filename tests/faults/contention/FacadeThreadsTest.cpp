#include <sql/DatabaseApi.h>

#include <array>
#include <atomic>
#include <functional>
#include <thread>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "support/Cells.h"
#include "support/FacadeOperations.h"
#include "support/SoakMode.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

// Facades on separate threads, each with a separate file, share no data that needs a lock. The thread sanitizer (preset
// tsan) checks it; without the sanitizer these tests still compare every result.

constexpr std::size_t Threads = 2;

/// Runs `work(number)`, which returns what went wrong, on every thread at once, and expects no failure.
template <typename Work>
void ExpectNoFailureOnThreads(Work work)
{
    std::array<std::string, Threads> failures;
    std::atomic<std::size_t> ready = 0;
    std::vector<std::thread> threads;
    for (std::size_t number = 0; number < Threads; ++number) {
        threads.emplace_back([&, number] {
            for (++ready; ready < Threads;) {
                std::this_thread::yield();
            }
            failures.at(number) = work(number);
        });
    }
    for (std::size_t number = 0; number < Threads; ++number) {
        threads[number].join();
        EXPECT_EQ(failures.at(number), "") << "on thread " << number;
    }
}

/// Creates, fills, changes, reads, walks and drops a table, and makes some operations fail. Returns what went wrong.
std::string UseEveryOperation(DatabaseApi& database, int round)
{
    int result = -1;
    DbTableData data;
    DbTableRowValues row;
    const DbTableDefinition definition{
        "log", {{"number", DbTableColumnType::Integer, 0, PrimaryKey}, {"text", DbTableColumnType::Text}}, {}};
    const DbTableDataWrite rows{{}, {{{IntegerCell(1), TextCell("it's")}}, {{IntegerCell(2), TextCell("two")}}}};
    const DbTableDataWrite update{{"text"}, {{{RealCell(round + 0.5)}}}};
    const std::string updated = "string(" + std::to_string(round) + ".5)";
    const auto failsWith = [&](int code, bool succeeded) { return !succeeded && database.GetLastError() == code; };
    const auto bind = [](SqlCommand command) {
        return command.BindInt64(1, 3) && command.BindText(2, "three") && command.Step();
    };

    const std::pair<const char*, std::function<bool()>> operations[] = {
        {"create", [&] { return database.CreateTable(definition); }},
        {"write", [&] { return database.WriteTableValues("log", rows); }},
        {"update", [&] { return database.UpdateTableValues("log", update, "WHERE number=2"); }},
        {"write twice", [&] { return failsWith(SQLITE_CONSTRAINT, database.WriteTableValues("log", rows)); }},
        {"read what is absent", [&] { return failsWith(SQLITE_ERROR, database.ReadTableValues("absent", data)); }},
        {"read", [&] { return database.ReadTableValues("log", data) && data.rows.size() == 2; }},
        {"begin", [&] { return database.SqlQueryBegin("SELECT text FROM log ORDER BY number DESC"); }},
        {"walk", [&] { return database.ReadNextRow(row) && ValueText(row.cells.at(0)) == updated; }},
        {"end", [&] { return database.CloseReadTable(); }},
        {"count", [&] { return database.ExistData("log", "WHERE number>1", result) == 1; }},
        {"test", [&] { return database.ExistsTable("LOG", result); }},
        {"bind", [&] { return bind(database.PrepareStatement("INSERT INTO log VALUES (?, ?)")); }},
        {"rename", [&] { return database.AlterTable("log", "old"); }},
        {"drop", [&] { return database.DropTable("old") && !database.ExistsTable("old", result); }},
        {"run nothing", [&] { return failsWith(112, database.Execute("")); }},
    };
    for (const auto& [name, succeeds] : operations) {
        if (!succeeds()) {
            return std::string(name) + ": " + std::to_string(database.GetLastError()) + " " +
                   database.GetLastErrorMsg();
        }
    }
    return "";
}

TEST(FacadeThreadsTest, FacadesOfTwoThreadsDoEverythingAtOnce)
{
    const TemporaryDirectory directory;
    const int rounds = Rounds(30, 1000);

    ExpectNoFailureOnThreads([&](std::size_t number) {
        std::string failure;
        for (int round = 0; round < rounds && failure.empty(); ++round) {
            DatabaseApi database;
            if (!database.OpenDatabase(directory.File(std::to_string(number) + "/thread.db"), false) ||
                !database.Execute("PRAGMA synchronous = OFF")) {
                return "open: " + database.GetLastErrorMsg();
            }
            failure = UseEveryOperation(database, round);
        }
        return failure;
    });
}

TEST(FacadeThreadsTest, RandomOperationsOfTwoThreadsEqualTheReference)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        const TemporaryDirectory directory;
        const int operations = Rounds(1500, 50000);

        ExpectNoFailureOnThreads([&](std::size_t number) {
            FuzzInput choices(seed + number);
            FacadeOperations facade(directory.Path() / std::to_string(number),
                                    FacadeOperations::GlobalLocale::Unchanged);
            std::string difference;
            for (int i = 0; i < operations && difference.empty(); ++i) {
                difference = facade.RunOne(choices);
            }
            return difference.empty() ? facade.CompareFiles() : difference;
        });
    }
}

} // namespace

} // namespace Morvik::sql::tests
