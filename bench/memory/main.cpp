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

void CountSqlite()
{
    Require(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &usual) == SQLITE_OK, "SQLite's allocator");
    sqlite3_mem_methods counting = usual;
    counting.xMalloc = [](int size) {
        void* const memory = usual.xMalloc(size);
        Taken(SizeForSqlite(memory));
        return memory;
    };
    counting.xFree = [](void* memory) {
        inUse -= SizeForSqlite(memory);
        usual.xFree(memory);
    };
    counting.xRealloc = [](void* memory, int size) {
        const std::size_t before = SizeForSqlite(memory);
        void* const moved = usual.xRealloc(memory, size);
        inUse -= before;
        Taken(moved != nullptr ? SizeForSqlite(moved) : before);
        return moved;
    };
    Require(sqlite3_config(SQLITE_CONFIG_MALLOC, &counting) == SQLITE_OK, "the counting allocator");
}

// The most bytes that `job` has in use at one time, without those in use before.
std::size_t PeakOf(const auto& job)
{
    const std::size_t before = inUse;
    highest = inUse;
    job();
    return highest - before;
}

// The cells of a row: integers, and texts of `textSize` characters.
struct Shape {
    std::size_t integers;
    std::size_t texts;
    std::size_t textSize;

    std::string Name() const
    {
        return std::to_string(integers) + " integers, " + std::to_string(texts) + " texts of " +
               std::to_string(textSize) + " bytes";
    }
};

DbTableDataWrite RowsOf(const Shape& shape, int count)
{
    DbTableDataWrite data;
    for (std::size_t i = 0; i < shape.integers + shape.texts; ++i) {
        data.columns.push_back("c" + std::to_string(i));
    }
    for (int row = 0; row < count; ++row) {
        std::vector<DbTableColumnValue>& cells = data.rows.emplace_back().cells;
        cells.assign(shape.integers, {DbTableColumnType::Integer, 0, 10'000 + row % 10'000});
        cells.resize(shape.integers + shape.texts, {DbTableColumnType::Text, 0, std::string(shape.textSize, 'x')});
    }
    return data;
}

// The bytes of all quoted texts and blobs with their quotation marks. None of them has a quotation mark in it.
std::size_t QuotedSize(const std::string& statement)
{
    std::size_t size = 0;
    bool inside = false;
    for (const char character : statement) {
        inside ^= character == '"';
        size += inside || character == '"' ? 1 : 0;
    }
    return size;
}

void MeasureWrite(std::FILE* output, const std::string& shape, const DbTableDataWrite& data, const char* separator)
{
    std::string createTable = "CREATE TABLE sample";
    for (const std::string& column : data.columns) {
        createTable += (&column == data.columns.data() ? "(" : ",") + column;
    }
    createTable += ')';
    const std::vector<std::string> texts = ExecutedTexts([&] {
        Library database(InMemory);
        database.Execute(createTable);
        database.Insert(data);
    });
    // Limits SQLite's cache to a few pages. Otherwise the memory for pages would hide the memory for the statement.
    Library database(NewFile());
    database.Execute("PRAGMA cache_size=10; PRAGMA synchronous=0");
    database.Execute(createTable);
    const auto write = [&] { database.Insert(data); };
    write();
    const std::size_t peak = PeakOf(write);
    std::fprintf(output,
                 "%s\n{\"shape\": \"%s\", \"rows\": %zu, \"cells\": %zu, \"text\": %zu, \"quoted\": %zu, "
                 "\"peak\": %zu}",
                 separator, shape.c_str(), data.rows.size(), data.rows.size() * data.columns.size(),
                 texts.back().size(), QuotedSize(texts.back()), peak);
}

template <typename Contender>
std::size_t PeakOfWriting(int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    const typename Contender::Write write = Contender::MakeWrite(rows);
    Fresh<Contender> database;
    database.Make();
    std::size_t peak = PeakOf([&] { database.Get().Insert(write); });
    database.RequireWritten(rows);
    // The input of the contender counts only if it is text, because a caller has to build that text.
    if constexpr (std::is_same_v<typename Contender::Write, std::string>) {
        peak += write.size();
    }
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
        if constexpr (bench::Writer<Contender>) {
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
            bench::MeasureWrite(output, shape.Name(), bench::RowsOf(shape, rows), separator);
            separator = ",";
        }
        bench::MeasureWrite(output, "sample", bench::WriteRequest(bench::SampleRows(rows)), separator);
    }
    std::fprintf(output, "]}\n");
    return std::fclose(output) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
