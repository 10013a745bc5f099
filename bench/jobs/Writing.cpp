#include "support/Jobs.h"

#include "contenders/Contenders.h"
#include "support/Databases.h"
#include "support/ExecutedTexts.h"
#include "support/Transactions.h"

#include <filesystem>
#include <memory>

namespace Morvik::sql::bench {

namespace {

// Every round writes into a database of its own; the last one is looked at.
template <typename Contender>
void WriteAll(benchmark::State& state, bool inFile, int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    const typename Contender::Write write = Contender::MakeWrite(rows);
    const std::string path = inFile ? Directory().File("written.db") : InMemory;
    std::unique_ptr<Contender> contender;
    for ([[maybe_unused]] auto round : state) {
        state.PauseTiming();
        contender.reset();
        std::filesystem::remove(path);
        contender = std::make_unique<Contender>(path);
        contender->Execute(CreateTable);
        state.ResumeTiming();
        contender->Insert(write);
    }
    RequireWritten(*contender, rows);
}

template <typename Contender>
void WriteSingly(benchmark::State& state, int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    std::vector<typename Contender::Write> writes;
    for (const SampleRow& row : rows) {
        writes.push_back(Contender::MakeWrite({row}));
    }
    Contender contender(InMemory);
    contender.Execute(CreateTable);
    InTransactions(state, contender, [&] { contender.InsertEach(writes); });
    RequireWritten(contender, rows);
}

template <typename Contender>
void UpdateSingly(benchmark::State& state, int count)
{
    const std::vector<SampleRow> rows = ChangedRows(count);
    std::vector<typename Contender::Change> changes;
    for (const SampleRow& row : rows) {
        changes.push_back(Contender::MakeChange(row));
    }
    Contender contender(InMemory);
    Fill(contender, count);
    InTransactions(state, contender, [&] { contender.UpdateEach(changes); });
    RequireWritten(contender, rows);
}

// The floor is the library's own text, or the ratios say nothing.
void RequireSameTexts()
{
    const std::vector<SampleRow> rows = SampleRows(1000);
    const ExecutedTexts executed;
    {
        Library library(InMemory);
        library.Execute(CreateTable);
        library.Insert(Library::MakeWrite(rows));
        library.UpdateEach({Library::MakeChange(rows.front())});
    }
    const std::vector<std::string> expected{CreateTable, PlainC::MakeWrite(rows), PlainC::MakeChange(rows.front())};
    Require(executed.Texts() == expected, "the library's texts are not the ready-made ones");
}

} // namespace

void RegisterWriting()
{
    RequireSameTexts();
    ForEachContender([]<typename Contender> {
        for (const int rows : {1'000, 10'000, 100'000}) {
            for (const bool inFile : {false, true}) {
                const std::string job = std::string(inFile ? "write file/" : "write memory/") + std::to_string(rows);
                RegisterJob(job, Contender::Name, IterationsFor(rows),
                            [=](benchmark::State& state) { WriteAll<Contender>(state, inFile, rows); });
            }
        }
        RegisterJob("write singly/1000", Contender::Name, 25,
                    [](benchmark::State& state) { WriteSingly<Contender>(state, 1000); });
        RegisterJob("update singly/1000", Contender::Name, 25,
                    [](benchmark::State& state) { UpdateSingly<Contender>(state, 1000); });
    });
}

} // namespace Morvik::sql::bench
