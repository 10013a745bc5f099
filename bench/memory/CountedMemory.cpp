#include "memory/CountedMemory.h"

#include "support/Require.h"

#include <malloc.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace Morvik::sql::bench {

namespace {

std::size_t inUse = 0;
std::size_t highest = 0;
sqlite3_mem_methods plainMethods;

void Taken(std::size_t size)
{
    inUse += size;
    highest = std::max(highest, inUse);
}

void* CountedMalloc(int size)
{
    void* const memory = plainMethods.xMalloc(size);
    if (memory != nullptr) {
        Taken(static_cast<std::size_t>(plainMethods.xSize(memory)));
    }
    return memory;
}

void CountedFree(void* memory)
{
    inUse -= static_cast<std::size_t>(plainMethods.xSize(memory));
    plainMethods.xFree(memory);
}

void* CountedRealloc(void* memory, int size)
{
    const auto before = static_cast<std::size_t>(plainMethods.xSize(memory));
    void* const moved = plainMethods.xRealloc(memory, size);
    if (moved != nullptr) {
        inUse -= before;
        Taken(static_cast<std::size_t>(plainMethods.xSize(moved)));
    }
    return moved;
}

} // namespace

void CountedMemory::CountSqlite()
{
    sqlite3_mem_methods methods;
    Require(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &plainMethods) == SQLITE_OK, "SQLite's allocator");
    methods = plainMethods;
    methods.xMalloc = CountedMalloc;
    methods.xFree = CountedFree;
    methods.xRealloc = CountedRealloc;
    Require(sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK, "the counting allocator");
}

CountedMemory::CountedMemory() : m_start(inUse)
{
    highest = inUse;
}

std::size_t CountedMemory::Peak() const
{
    return highest - m_start;
}

void* CountedNew(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    Taken(malloc_usable_size(memory));
    return memory;
}

void CountedDelete(void* memory) noexcept
{
    inUse -= malloc_usable_size(memory);
    std::free(memory);
}

} // namespace Morvik::sql::bench

void* operator new(std::size_t size)
{
    return Morvik::sql::bench::CountedNew(size);
}

void operator delete(void* memory) noexcept
{
    Morvik::sql::bench::CountedDelete(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    Morvik::sql::bench::CountedDelete(memory);
}
