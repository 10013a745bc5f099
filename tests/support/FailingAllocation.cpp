#include "support/FailingAllocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace Morvik::sql::tests {

namespace {

constexpr int NoneFails = -1;

thread_local int allocationsLeft = NoneFails;
thread_local bool fired = false;

bool Fails()
{
    if (allocationsLeft == NoneFails || allocationsLeft-- > 0) {
        return false;
    }
    fired = true;
    return true;
}

void* Allocate(std::size_t size) noexcept
{
    return Fails() ? nullptr : std::malloc(size != 0 ? size : 1);
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

FailingAllocation::FailingAllocation(int succeeding)
{
    fired = false;
    allocationsLeft = succeeding;
}

FailingAllocation::~FailingAllocation()
{
    allocationsLeft = NoneFails;
}

bool FailingAllocation::Fired() const
{
    return fired;
}

} // namespace Morvik::sql::tests

// The whole family for types of usual alignment, so that each piece of memory is freed by the partner of what gave it.
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
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}
