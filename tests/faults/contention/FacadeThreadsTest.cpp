#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

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

/// Runs `work(number)` on every thread at once. Returns what went wrong on each thread, empty for nothing.
template <typename Work>
std::array<std::string, Threads> OnThreads(Work work)
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
    for (std::thread& thread : threads) {
        thread.join();
    }
    return failures;
}

/// Creates, fills, changes, reads, walks and drops a table, and makes some operations fail. Returns what went wrong.
std::string UseEveryOperation(DatabaseApi& database, int round)
{
    int result = -1;
    DbTableData data;
    DbTableRowValues row;
    const auto failure = [&](const char* operation) {
        return std::string(operation) + ": " + std::to_string(database.GetLastError()) + " " +
               database.GetLastErrorMsg();
    };
    const DbTableDefinition definition{
        "log", {{"number", DbTableColumnType::Integer, 0, PrimaryKey}, {"text", DbTableColumnType::Text}}, {}};
    const DbTableDataWrite rows{{}, {{{IntegerCell(1), TextCell("it's")}}, {{IntegerCell(2), TextCell("two")}}}};
    if (!database.CreateTable(definition) || !database.WriteTableValues("log", rows)) {
        return failure("make");
    }
    if (!database.UpdateTableValues("log", {{"text"}, {{{RealCell(round + 0.5)}}}}, "WHERE number=2")) {
        return failure("update");
    }
    if (database.WriteTableValues("log", rows) || database.GetLastError() != 19) {
        return failure("write twice");
    }
    if (database.ReadTableValues("absent", data) || database.GetLastError() != 1) {
        return failure("read what is absent");
    }
    if (!database.ReadTableValues("log", data) || data.rows.size() != 2) {
        return failure("read");
    }
    if (!database.SqlQueryBegin("SELECT text FROM log ORDER BY number DESC") || !database.ReadNextRow(row) ||
        !database.CloseReadTable() || ValueText(row.cells.at(0)) != "string(" + std::to_string(round) + ".5)") {
        return failure("walk");
    }
    if (database.ExistData("log", "WHERE number>1", result) != 1 || !database.ExistsTable("LOG", result)) {
        return failure("test");
    }
    {
        SqlCommand command = database.PrepareStatement("INSERT INTO log VALUES (?, ?)");
        if (!command.BindInt64(1, 3) || !command.BindText(2, "three") || !command.Step()) {
            return failure("bind");
        }
    }
    if (!database.AlterTable("log", "old") || !database.DropTable("old") || database.ExistsTable("old", result)) {
        return failure("drop");
    }
    return database.Execute("") ? "an empty command ran" : "";
}

TEST(FacadeThreadsTest, FacadesOfTwoThreadsDoEverythingAtOnce)
{
    const TemporaryDirectory directory;
    const int rounds = Rounds(30, 1000);

    const auto failures = OnThreads([&](std::size_t number) {
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

    for (const std::string& failure : failures) {
        EXPECT_EQ(failure, "");
    }
}

TEST(FacadeThreadsTest, ChosenOperationsOfTwoThreadsAnswerAsRawSqlite)
{
    for (const std::uint64_t seed : TestSeeds()) {
        const TemporaryDirectory directory;
        const int operations = Rounds(1500, 50000);

        const auto failures = OnThreads([&](std::size_t number) {
            FuzzInput choices(seed + number);
            FacadeOperations facade(directory.Path() / std::to_string(number),
                                    FacadeOperations::GlobalLocale::Unchanged);
            std::string difference;
            for (int i = 0; i < operations && difference.empty(); ++i) {
                difference = facade.RunOne(choices);
            }
            return difference.empty() ? facade.CompareFiles() : difference;
        });

        for (const std::string& failure : failures) {
            EXPECT_EQ(failure, "") << Describe(seed);
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
