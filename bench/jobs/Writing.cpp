#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "contenders/Contenders.h"
#include "support/Databases.h"
#include "support/Jobs.h"

namespace Morvik::sql::bench {

namespace {

// Every run changes a new database.
template <typename Contender>
Task ChangeTask(const Setup& setup, const std::vector<SampleRow>& expected, auto change)
{
    const auto database = std::make_shared<Fresh<Contender>>(setup);
    return {[=] { database->Make(); }, [=, change = std::move(change)] { change(database->Get()); },
            [=] { database->RequireWritten(expected); }};
}

template <typename Contender>
Task WriteTask(int count, bool inFile)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    return ChangeTask<Contender>({.inFile = inFile}, rows, [write = Contender::MakeWrite(rows)](Contender& contender) {
        contender.Insert(write);
    });
}

template <typename Contender>
Task UpdateSinglyTask(int count)
{
    const std::vector<SampleRow> rows = ChangedRows(count);
    std::vector<typename Contender::Change> changes;
    for (const SampleRow& row : rows) {
        changes.push_back(Contender::MakeChange(row));
    }
    return ChangeTask<Contender>({.inTransaction = true, .filled = count}, rows,
                                 [=](Contender& contender) { contender.UpdateEach(changes); });
}

template <typename Contender>
Task BindTask(int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    return ChangeTask<Contender>(
        {.inTransaction = true}, rows,
        [bound = Contender::MakeBound(rows)](Contender& contender) { contender.InsertBound(bound); });
}

// Writes the rows with calls of `batch` rows each, all in one transaction.
template <typename Contender>
Task WriteBatchesTask(int count, int batch, bool inFile)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    std::vector<typename Contender::Write> writes;
    for (const std::vector<SampleRow>& part : Batches(rows, batch)) {
        writes.push_back(Contender::MakeWrite(part));
    }
    return ChangeTask<Contender>({.inFile = inFile, .inTransaction = true}, rows,
                                 [=](Contender& contender) { contender.InsertEach(writes); });
}

// The reference must execute the same text as the library. Otherwise the ratios mean nothing.
void RequireSameTexts()
{
    const std::vector<SampleRow> rows = SampleRows(1000);
    const std::vector<std::string> executed = ExecutedTexts([&] {
        Library library(InMemory);
        library.Execute(CreateTable);
        library.Insert(Library::MakeWrite(rows));
        library.UpdateEach({Library::MakeChange(rows.front())});
    });
    const std::vector<std::string> expected{CreateTable, RawSqlite::MakeWrite(rows),
                                            RawSqlite::MakeChange(rows.front())};
    Require(executed == expected, "the library's texts are not the reference's");
}

} // namespace

void AddWriting(Jobs& jobs)
{
    RequireSameTexts();
    ForEachContender([&]<typename Contender> {
        if constexpr (Writer<Contender>) {
            for (const int count : {1'000, 10'000, 100'000}) {
                for (const bool inFile : {false, true}) {
                    jobs.Add(inFile ? "write file" : "write memory", count, RepeatsFor(count), Contender::Name,
                             [=] { return WriteTask<Contender>(count, inFile); });
                }
            }
            jobs.Add("write singly", 1000, 5, Contender::Name,
                     [] { return WriteBatchesTask<Contender>(1000, 1, false); });
        }
        if constexpr (Writer<Contender> && requires { typename Contender::Change; }) {
            jobs.Add("update singly", 1000, 5, Contender::Name, [] { return UpdateSinglyTask<Contender>(1000); });
        }
        // Library is left out, because it binds in the same way as LibraryPrepared.
        if constexpr (Writer<Contender> && !std::is_same_v<Contender, Library>) {
            jobs.Add("bind", 1000, 10, Contender::Name, [] { return BindTask<Contender>(1000); });
        }
    });
}

void AddGrowth(Jobs& jobs)
{
    for (const int count : {1'000, 10'000, 100'000, 1'000'000}) {
        jobs.Add("write batches", count, RepeatsFor(count), Library::Name,
                 [=] { return WriteBatchesTask<Library>(count, 1000, true); });
        jobs.Add("write batches", count, RepeatsFor(count), RawSqlite::Name,
                 [=] { return WriteBatchesTask<RawSqlite>(count, 1000, true); });
    }
    for (const int batch : {1, 2, 5, 10, 20, 50, 100, 200, 500, 1'000, 2'000, 5'000, 10'000}) {
        jobs.Add("batch", 10'000, 1, std::to_string(batch),
                 [=] { return WriteBatchesTask<Library>(10'000, batch, true); });
    }
}

} // namespace Morvik::sql::bench
