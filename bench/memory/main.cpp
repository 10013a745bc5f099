// Counts the memory that C++ and SQLite use together. The program replaces operator new and delete, and wraps SQLite's
// allocator.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include <malloc.h>
#include <sqlite3.h>

#include "contenders/Contenders.h"
#include "support/Databases.h"

namespace Morvik::sql::bench {

namespace {

std::size_t inUse = 0;
std::size_t highest = 0;
sqlite3_mem_methods usual;

void Taken(std::size_t size)
{
    inUse += size;
    highest = std::max(highest, inUse);
}

std::size_t SizeForSqlite(void* memory)
{
    return memory != nullptr ? static_cast<std::size_t>(usual.xSize(memory)) : 0;
}

void* AllocateForSqlite(int size)
{
    void* const memory = usual.xMalloc(size);
    Taken(SizeForSqlite(memory));
    return memory;
}

void FreeForSqlite(void* memory)
{
    inUse -= SizeForSqlite(memory);
    usual.xFree(memory);
}

void* ReallocateForSqlite(void* memory, int size)
{
    const std::size_t before = SizeForSqlite(memory);
    void* const moved = usual.xRealloc(memory, size);
    if (moved != nullptr) {
        inUse -= before;
        Taken(SizeForSqlite(moved));
    }
    return moved;
}

void CountSqlite()
{
    Require(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &usual) == SQLITE_OK, "SQLite's allocator");
    sqlite3_mem_methods counting = usual;
    counting.xMalloc = AllocateForSqlite;
    counting.xFree = FreeForSqlite;
    counting.xRealloc = ReallocateForSqlite;
    Require(sqlite3_config(SQLITE_CONFIG_MALLOC, &counting) == SQLITE_OK, "the counting allocator");
}

// The most bytes that `job` has in use at one time, without those in use before.
template <typename Job>
std::size_t PeakOf(const Job& job)
{
    const std::size_t before = inUse;
    highest = inUse;
    job();
    return highest - before;
}

// The cells of a row: integers, and texts of `textSize` characters.
struct Shape {
    int integers;
    int texts;
    std::size_t textSize;
};

struct Statement {
    std::string shape;
    DbTableDataWrite data;
    std::string columns;
    std::size_t cells = 0;
    std::size_t text = 0;
    std::size_t quoted = 0;
};

// The size of the statement that WriteTableValues makes for `rows` rows: `text` bytes, of which `quoted` bytes are
// texts with their quotation marks.
Statement StatementOf(const Shape& shape, int rows)
{
    Statement statement;
    statement.shape = std::to_string(shape.integers) + " integers, " + std::to_string(shape.texts) + " texts of " +
                      std::to_string(shape.textSize) + " bytes";
    for (int i = 0; i < shape.integers + shape.texts; ++i) {
        statement.data.columns.push_back("c" + std::to_string(i));
        statement.columns += (i == 0 ? "" : ",") + statement.data.columns.back();
    }
    for (int row = 0; row < rows; ++row) {
        std::vector<DbTableColumnValue>& cells = statement.data.rows.emplace_back().cells;
        cells.assign(static_cast<std::size_t>(shape.integers), {DbTableColumnType::Integer, 0, 10'000 + row % 10'000});
        cells.resize(cells.size() + static_cast<std::size_t>(shape.texts),
                     {DbTableColumnType::Text, 0, std::string(shape.textSize, 'x')});
    }
    const std::size_t count = statement.data.rows.size();
    const std::size_t texts = count * static_cast<std::size_t>(shape.texts);
    const std::size_t integers = count * static_cast<std::size_t>(shape.integers);
    statement.cells = integers + texts;
    statement.quoted = texts * (shape.textSize + std::string("\"\"").size());
    statement.text = std::string("INSERT INTO sample () VALUES").size() + statement.columns.size() +
                     count * std::string(" ,(").size() + integers * std::string("10000,").size() + statement.quoted +
                     texts * std::string(",").size();
    return statement;
}

// The statement that WriteTableValues makes of the rows that every job writes.
Statement SampleStatement(int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    Statement statement;
    statement.shape = "sample";
    statement.data = WriteRequest(rows);
    statement.columns = "number,measure,label,bytes";
    statement.cells = 4 * rows.size();
    statement.text = InsertText(rows).size();
    for (const SampleRow& row : rows) {
        statement.quoted += row.label.size() + row.bytes.size() + 4;
    }
    return statement;
}

// Limits SQLite's cache to a few pages. Otherwise the memory for pages would hide the memory for the statement.
void WriteStatement(std::FILE* output, const Statement& statement, const char* separator)
{
    DatabaseApi database;
    Require(database.OpenDatabase(NewFile(), false) && database.Execute("PRAGMA cache_size=10; PRAGMA synchronous=0") &&
                database.Execute("CREATE TABLE sample (" + statement.columns + ")"),
            "open", database.GetLastErrorMsg().c_str());
    const auto write = [&] {
        Require(database.WriteTableValues("sample", statement.data), "write", database.GetLastErrorMsg().c_str());
    };
    write();
    const std::size_t peak = PeakOf(write);
    std::fprintf(output,
                 "%s\n{\"shape\": \"%s\", \"rows\": %zu, \"cells\": %zu, \"text\": %zu, \"quoted\": %zu, "
                 "\"peak\": %zu}",
                 separator, statement.shape.c_str(), statement.data.rows.size(), statement.cells, statement.text,
                 statement.quoted, peak);
}

// The input of the contender counts only if it is text, because a caller has to build that text.
template <typename Contender>
std::size_t SizeOfText(const typename Contender::Write& write)
{
    if constexpr (std::is_same_v<typename Contender::Write, std::string>) {
        return write.size();
    } else {
        return 0;
    }
}

template <typename Contender>
std::size_t PeakOfWriting(int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    const typename Contender::Write write = Contender::MakeWrite(rows);
    Fresh<Contender> database(false);
    database.Make();
    const std::size_t peak = PeakOf([&] { database.Get().Insert(write); }) + SizeOfText<Contender>(write);
    database.RequireWritten(rows);
    return peak;
}

} // namespace

} // namespace Morvik::sql::bench

// Not inlined: a compiler that sees both malloc and operator delete warns that they do not match.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    Morvik::sql::bench::Taken(malloc_usable_size(memory));
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    Morvik::sql::bench::inUse -= malloc_usable_size(memory);
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    std::FILE* const output = argc >= 2 ? std::fopen(argv[1], "w") : nullptr;
    if (output == nullptr) {
        std::fprintf(stderr, "usage: %s OUTPUT.json [LARGEST]\nMeasures statements of at most LARGEST rows.\n",
                     argv[0]);
        return EXIT_FAILURE;
    }
    const int largest = argc >= 3 ? std::atoi(argv[2]) : std::numeric_limits<int>::max();
    bench::CountSqlite();
    const char* separator = "{\"peaks\": {";
    bench::ForEachContender([&]<typename Contender> {
        if constexpr (bench::Writer<Contender> && requires { typename Contender::Write; }) {
            const int count = std::min(largest, 100'000);
            std::fprintf(output, "%s\n\"%s\": %zu", separator, Contender::Name, bench::PeakOfWriting<Contender>(count));
            separator = ",";
        }
    });
    separator = "},\n\"statements\": [";
    const bench::Shape shapes[] = {{1, 0, 0},  {4, 0, 0},  {8, 0, 0},   {1, 1, 20},  {0, 4, 10},
                                   {3, 3, 50}, {6, 10, 8}, {1, 1, 200}, {1, 1, 2000}};
    for (const int rows : {1, 2, 5, 10, 20, 50, 100, 200, 500, 1'000, 2'000, 5'000, 10'000}) {
        if (rows > largest) {
            break;
        }
        for (const bench::Shape& shape : shapes) {
            bench::WriteStatement(output, bench::StatementOf(shape, rows), separator);
            separator = ",";
        }
        bench::WriteStatement(output, bench::SampleStatement(rows), separator);
    }
    std::fprintf(output, "]}\n");
    return std::fclose(output) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
