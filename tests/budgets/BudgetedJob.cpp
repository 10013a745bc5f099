// Does one job on 1,000 rows or files, for callgrind to count its instructions, and prints the heap allocations that it
// made.

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#include "RunBudgetedJob.h"
#include "contenders/Library.h"
#include "support/Require.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::bench {

namespace {

constexpr int Count = 1000;

// Counts no more than what `job` does: everything it needs was made before, and what it leaves is dropped behind it.
void Measure(const std::function<void()>& job)
{
    std::printf("allocations %zu\n", RunBudgetedJob(job));
}

class Database : public Library {
public:
    Database() : Library(":memory:") { Execute(CreateTable); }

    void Fill()
    {
        Execute("BEGIN");
        InsertBound(SampleRows(Count));
        Execute("COMMIT");
    }

    void RequireRows(const std::vector<SampleRow>& rows)
    {
        Rows read;
        Read("SELECT number, measure, label, CAST(bytes AS BLOB) FROM sample ORDER BY number", read);
        Require(SumOf(read) == Sum(rows), "rows");
    }
};

void Write()
{
    Database database;
    const Library::Write write = Library::MakeWrite(SampleRows(Count));
    Measure([&] { database.Insert(write); });
    database.RequireRows(SampleRows(Count));
}

void Update()
{
    Database database;
    database.Fill();
    std::vector<Library::Change> changes;
    for (const SampleRow& row : ChangedRows(Count)) {
        changes.push_back(Library::MakeChange(row));
    }
    database.Execute("BEGIN");
    Measure([&] { database.UpdateEach(changes); });
    database.Execute("COMMIT");
    database.RequireRows(ChangedRows(Count));
}

void Read()
{
    Database database;
    database.Fill();
    Library::Rows rows;
    Measure([&] { database.Read(SelectAll, rows); });
    Require(Library::SumOf(rows) == Sum(SampleRows(Count)), "rows read");
}

void Walk()
{
    Database database;
    database.Fill();
    Totals totals;
    Measure([&] { totals = database.Walk(SelectAll); });
    Require(totals == Sum(SampleRows(Count)), "rows walked");
}

void LookUp()
{
    Database database;
    database.Fill();
    std::vector<Library::Query> queries;
    for (int number = 0; number < Count; ++number) {
        queries.push_back(Library::MakeQuery(number));
    }
    Totals totals;
    Measure([&] { totals = database.LookUp(queries); });
    Require(totals == Sum(SampleRows(Count)), "rows looked up");
}

void Bind()
{
    Database database;
    const std::vector<SampleRow> rows = SampleRows(Count);
    database.Execute("BEGIN");
    Measure([&] { database.InsertBound(rows); });
    database.Execute("COMMIT");
    database.RequireRows(rows);
}

void Open()
{
    const tests::TemporaryDirectory directory;
    const std::string path = directory.File("opened.db");
    Library::OpenAndClose(path);
    Measure([&] {
        for (int i = 0; i < Count; ++i) {
            Library::OpenAndClose(path);
        }
    });
}

} // namespace

} // namespace Morvik::sql::bench

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    const std::map<std::string, void (*)()> jobs{
        {"write", bench::Write}, {"update", bench::Update},  {"read", bench::Read}, {"walk", bench::Walk},
        {"bind", bench::Bind},   {"look-up", bench::LookUp}, {"open", bench::Open}};
    const auto job = jobs.find(argc == 2 ? argv[1] : "");
    if (job == jobs.end()) {
        std::fprintf(stderr, "usage: %s write|update|read|walk|bind|look-up|open\n", argv[0]);
        return EXIT_FAILURE;
    }
    std::printf("machine GCC %s, SQLite %s, %zu-bit\n", __VERSION__, sqlite3_libversion(), 8 * sizeof(void*));
    job->second();
    return EXIT_SUCCESS;
}
