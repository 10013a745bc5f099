#include <memory>
#include <string>
#include <vector>

#include <sqlite3.h>

#include "contenders/Contenders.h"
#include "support/Databases.h"
#include "support/Jobs.h"

namespace Morvik::sql::bench {

namespace {

// Every run writes into a new database.
template <typename Contender>
Task WriteTask(int count, bool inFile)
{
    const auto database = std::make_shared<Fresh<Contender>>(inFile);
    const std::vector<SampleRow> rows = SampleRows(count);
    return {[=] { database->Make(); }, [=, write = Contender::MakeWrite(rows)] { database->Get().Insert(write); },
            [=] { database->RequireWritten(rows); }};
}

template <typename Contender>
Task UpdateSinglyTask(int count)
{
    const auto database = std::make_shared<Fresh<Contender>>(false);
    const std::vector<SampleRow> rows = ChangedRows(count);
    std::vector<typename Contender::Change> changes;
    for (const SampleRow& row : rows) {
        changes.push_back(Contender::MakeChange(row));
    }
    return {[=] { database->BeginFilled(count); }, [=] { database->Get().UpdateEach(changes); },
            [=] { database->RequireCommitted(rows); }};
}

// Writes the rows with calls of `batch` rows each, all in one transaction.
template <typename Contender>
Task WriteBatchesTask(int count, int batch, bool inFile)
{
    const auto database = std::make_shared<Fresh<Contender>>(inFile);
    const std::vector<SampleRow> rows = SampleRows(count);
    std::vector<typename Contender::Write> writes;
    for (const std::vector<SampleRow>& part : Batches(rows, batch)) {
        writes.push_back(Contender::MakeWrite(part));
    }
    return {[=] { database->Begin(); }, [=] { database->Get().InsertEach(writes); },
            [=] { database->RequireCommitted(rows); }};
}

// The texts that new connections execute.
std::vector<std::string> executed;

int TraceNewConnection(sqlite3* handle, char**, const void*)
{
    const auto keep = [](unsigned int, void*, void* statement, void*) {
        executed.emplace_back(sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
        return 0;
    };
    return sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, keep, nullptr);
}

// The reference must execute the same text as the library. Otherwise the ratios mean nothing.
void RequireSameTexts()
{
    const std::vector<SampleRow> rows = SampleRows(1000);
    const auto trace = reinterpret_cast<void (*)()>(TraceNewConnection);
    Require(sqlite3_auto_extension(trace) == SQLITE_OK, "trace new connections");
    {
        Library library(InMemory);
        library.Execute(CreateTable);
        library.Insert(Library::MakeWrite(rows));
        library.UpdateEach({Library::MakeChange(rows.front())});
    }
    sqlite3_cancel_auto_extension(trace);
    const std::vector<std::string> expected{CreateTable, RawSqlite::MakeWrite(rows),
                                            RawSqlite::MakeChange(rows.front())};
    Require(executed == expected, "the library's texts are not the reference's");
}

} // namespace

void AddWriting(Jobs& jobs)
{
    RequireSameTexts();
    ForEachContender([&]<typename Contender> {
        if constexpr (Writer<Contender> && requires { typename Contender::Write; }) {
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
