#include "support/OomInjector.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "support/FaultCounter.h"

namespace Morvik::sql::tests {

namespace {

thread_local FaultCounter failurePoint;
thread_local bool largestIsWatched = false;
thread_local std::size_t largest = 0;
std::atomic<std::size_t> liveBytes = 0;

void* Allocate(std::size_t size) noexcept
{
    if (largestIsWatched) {
        largest = std::max(largest, size);
    }
    void* const memory = failurePoint.Reached() ? nullptr : std::malloc(size != 0 ? size : 1);
    liveBytes += malloc_usable_size(memory);
    return memory;
}

void Free(void* memory) noexcept
{
    liveBytes -= malloc_usable_size(memory);
    std::free(memory);
}

void* AllocateOrThrow(std::size_t size)
{
    void* const memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

OomInjector::OomInjector(int succeeding, FailureExtent extent)
{
    failurePoint.Set(succeeding, extent);
}

OomInjector::~OomInjector()
{
    failurePoint.Clear();
}

bool OomInjector::Fired() const
{
    return failurePoint.Fired();
}

LargestAllocation::LargestAllocation()
{
    largest = 0;
    largestIsWatched = true;
}

LargestAllocation::~LargestAllocation()
{
    largestIsWatched = false;
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

// Replaces all operators for types of usual alignment, so that memory is always freed by the operator that belongs to
// its allocation.
void* operator new(std::size_t size)
{
    return Morvik::sql::tests::AllocateOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return Morvik::sql::tests::AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Morvik::sql::tests::Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return Morvik::sql::tests::Allocate(size);
}

void operator delete(void* memory) noexcept
{
    Morvik::sql::tests::Free(memory);
}

void operator delete[](void* memory) noexcept
{
    Morvik::sql::tests::Free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    Morvik::sql::tests::Free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    Morvik::sql::tests::Free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    Morvik::sql::tests::Free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    Morvik::sql::tests::Free(memory);
}
