#include "support/OomInjector.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>

#include <malloc.h>
#include <sqlite3.h>

namespace Morvik::sql::tests {

namespace {

// Counts the allocations of a thread down to the failing one.
struct Countdown {
    static constexpr int NoneFails = -1;

    int left = NoneFails;
    FailureExtent extent = FailureExtent::Once;
    bool fired = false;

    // Whether the allocation that is being requested fails.
    bool Reached()
    {
        if (left == NoneFails || left-- > 0) {
            return false;
        }
        left = extent == FailureExtent::ForEver ? 0 : NoneFails;
        fired = true;
        return true;
    }
};

thread_local Countdown ofNew;
thread_local Countdown ofSqlite;
thread_local std::size_t largest = 0;
std::atomic<std::size_t> liveBytes = 0;
sqlite3_mem_methods usual{};

Countdown& CountdownOf(Memory memory)
{
    return memory == Memory::OfNew ? ofNew : ofSqlite;
}

void* Allocate(std::size_t size) noexcept
{
    largest = std::max(largest, size);
    void* const memory = ofNew.Reached() ? nullptr : std::malloc(size != 0 ? size : 1);
    liveBytes += malloc_usable_size(memory);
    return memory;
}

void Free(void* memory) noexcept
{
    liveBytes -= malloc_usable_size(memory);
    std::free(memory);
}

void* AllocateForSqlite(int size)
{
    return ofSqlite.Reached() ? nullptr : usual.xMalloc(size);
}

void* ReallocateForSqlite(void* memory, int size)
{
    return ofSqlite.Reached() ? nullptr : usual.xRealloc(memory, size);
}

template <typename... Values>
void Configure(int option, Values... values)
{
    const int code = sqlite3_config(option, values...);
    if (code != SQLITE_OK) {
        throw std::runtime_error("sqlite3_config: option " + std::to_string(option) + ", code " + std::to_string(code));
    }
}

} // namespace

OomInjector::OomInjector(int succeeding, FailureExtent extent, Memory memory) : m_memory(memory)
{
    CountdownOf(memory) = {succeeding, extent};
}

OomInjector::~OomInjector()
{
    CountdownOf(m_memory).left = Countdown::NoneFails;
}

bool OomInjector::Fired() const
{
    return CountdownOf(m_memory).fired;
}

void WrapSqliteAllocator()
{
    if (usual.xMalloc != nullptr) {
        return;
    }
    if (sqlite3_shutdown() != SQLITE_OK) {
        throw std::runtime_error("SQLite is in use already");
    }
    Configure(SQLITE_CONFIG_GETMALLOC, &usual);
    sqlite3_mem_methods failing = usual;
    failing.xMalloc = AllocateForSqlite;
    failing.xRealloc = ReallocateForSqlite;
    Configure(SQLITE_CONFIG_MALLOC, &failing);
    Configure(SQLITE_CONFIG_LOOKASIDE, 0, 0);
    Configure(SQLITE_CONFIG_PAGECACHE, static_cast<void*>(nullptr), 0, 0);
}

LargestAllocation::LargestAllocation()
{
    largest = 0;
}

std::size_t LargestAllocation::Size() const
{
    return largest;
}

std::size_t LiveBytesOfNew()
{
    return liveBytes;
}

} // namespace Morvik::sql::tests

// The C++ library's other operators call these. With the address sanitizer, allocations of arrays do not fail, because
// its operators for arrays call no other operator; the library allocates no arrays.
void* operator new(std::size_t size)
{
    if (void* const memory = Morvik::sql::tests::Allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Morvik::sql::tests::Allocate(size);
}

void operator delete(void* memory) noexcept
{
    Morvik::sql::tests::Free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    Morvik::sql::tests::Free(memory);
}
