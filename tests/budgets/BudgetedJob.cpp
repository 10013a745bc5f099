// Does one job on 1,000 rows or files and prints the number of the job's heap allocations. Another program counts the
// instructions of the job.

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <sqlite3.h>

#include "RunBudgetedJob.h"
#include "contenders/Library.h"
#include "contenders/RawSqlite.h"
#include "support/Require.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::bench {

namespace {

constexpr int Count = 1000;

// Counts only `job`: its input is made before, and its result is checked afterwards.
void Measure(const std::function<void()>& job)
{
    std::printf("allocations %zu\n", RunBudgetedJob(job));
}

template <typename Contender>
class Database : public Contender {
public:
    Database() : Contender(":memory:") { this->Execute(CreateTable); }

    void Fill()
    {
        this->Execute("BEGIN");
        this->InsertBound(SampleRows(Count));
        this->Execute("COMMIT");
    }

    void RequireRows(const std::vector<SampleRow>& rows)
    {
        typename Contender::Rows read;
        this->Read("SELECT number, measure, label, CAST(bytes AS BLOB) FROM sample ORDER BY number", read);
        Require(Contender::SumOf(read) == Sum(rows), "rows");
    }
};

template <typename Contender>
struct Jobs {
    static void Write()
    {
        Database<Contender> database;
        const auto write = Contender::MakeWrite(SampleRows(Count));
        Measure([&] { database.Insert(write); });
        database.RequireRows(SampleRows(Count));
    }

    static void WriteBy(int batch)
    {
        Database<Contender> database;
        const std::vector<SampleRow> rows = SampleRows(Count);
        std::vector<typename Contender::Write> writes;
        for (const std::vector<SampleRow>& part : Batches(rows, batch)) {
            writes.push_back(Contender::MakeWrite(part));
        }
        database.Execute("BEGIN");
        Measure([&] { database.InsertEach(writes); });
        database.Execute("COMMIT");
        database.RequireRows(rows);
    }

    static void Update()
    {
        Database<Contender> database;
        database.Fill();
        std::vector<typename Contender::Change> changes;
        for (const SampleRow& row : ChangedRows(Count)) {
            changes.push_back(Contender::MakeChange(row));
        }
        database.Execute("BEGIN");
        Measure([&] { database.UpdateEach(changes); });
        database.Execute("COMMIT");
        database.RequireRows(ChangedRows(Count));
    }

    static void Read()
    {
        Database<Contender> database;
        database.Fill();
        typename Contender::Rows rows;
        Measure([&] { database.Read(SelectAll, rows); });
        Require(Contender::SumOf(rows) == Sum(SampleRows(Count)), "rows read");
    }

    static void Walk()
    {
        Database<Contender> database;
        database.Fill();
        Totals totals;
        Measure([&] { totals = database.Walk(SelectAll); });
        Require(totals == Sum(SampleRows(Count)), "rows walked");
    }

    static void LookUp()
    {
        Database<Contender> database;
        database.Fill();
        std::vector<typename Contender::Query> queries;
        for (int number = 0; number < Count; ++number) {
            queries.push_back(Contender::MakeQuery(number));
        }
        Totals totals;
        Measure([&] { totals = database.LookUp(queries); });
        Require(totals == Sum(SampleRows(Count)), "rows looked up");
    }

    static void Bind()
    {
        Database<Contender> database;
        const std::vector<SampleRow> rows = SampleRows(Count);
        database.Execute("BEGIN");
        Measure([&] { database.InsertBound(rows); });
        database.Execute("COMMIT");
        database.RequireRows(rows);
    }

    static void Open()
    {
        const tests::TemporaryDirectory directory;
        const std::string path = directory.File("opened.db");
        Contender::OpenAndClose(path);
        Measure([&] {
            for (int i = 0; i < Count; ++i) {
                Contender::OpenAndClose(path);
            }
        });
    }
};

// Runs the job; returns false if there is no job of this name. "write-by-N" writes N rows with each call.
template <typename Contender>
bool Run(std::string_view name)
{
    static constexpr std::string_view WriteBy = "write-by-";
    using Job = Jobs<Contender>;
    const std::map<std::string_view, void (*)()> jobs{
        {"write", Job::Write}, {"update", Job::Update},  {"read", Job::Read}, {"walk", Job::Walk},
        {"bind", Job::Bind},   {"look-up", Job::LookUp}, {"open", Job::Open}};
    int batch = 0;
    if (name.starts_with(WriteBy)) {
        std::from_chars(name.data() + WriteBy.size(), name.data() + name.size(), batch);
    }
    const auto job = jobs.find(name);
    if (batch > 0) {
        Job::WriteBy(batch);
    } else if (job != jobs.end()) {
        job->second();
    }
    return batch > 0 || job != jobs.end();
}

} // namespace

} // namespace Morvik::sql::bench

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    const std::map<std::string_view, bool (*)(std::string_view)> contenders{
        {bench::Library::Name, bench::Run<bench::Library>},
        {bench::RawSqlite::Name, bench::Run<bench::RawSqlite>},
        {bench::RawSqliteColumns::Name, bench::Run<bench::RawSqliteColumns>},
        {bench::RawSqliteNoMutex::Name, bench::Run<bench::RawSqliteNoMutex>}};
    const auto contender = contenders.find(argc == 3 ? argv[2] : bench::Library::Name);
    if (argc < 2 || contender == contenders.end() || !contender->second(argv[1])) {
        std::fprintf(stderr, "usage: %s write|write-by-N|update|read|walk|bind|look-up|open [contender]\n", argv[0]);
        return EXIT_FAILURE;
    }
    std::printf("machine GCC %s, SQLite %s, %zu-bit\n", __VERSION__, sqlite3_libversion(), 8 * sizeof(void*));
    return EXIT_SUCCESS;
}
