#include "RunBudgetedJob.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t allocations = 0;

} // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

std::size_t RunBudgetedJob(const std::function<void()>& job)
{
    const std::size_t before = allocations;
    job();
    return allocations - before;
}
