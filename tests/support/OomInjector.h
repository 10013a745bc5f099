#pragma once

#include <cstddef>

namespace Morvik::sql::tests {

/// Which allocations fail: one, or that one and all that follow it.
enum class FailureExtent { Once, ForEver };

/// Whose allocations fail: those of operator new, which throws std::bad_alloc, or those of SQLite.
enum class Memory { OfNew, OfSqlite };

/// While the object lives, allocations of the running thread fail: the first `succeeding` allocations succeed, the next
/// one fails, and with FailureExtent::ForEver so do all that follow. The program that links this file defines operator
/// new. Fired() tells whether the failing allocation was requested.
///
///     for (int succeeding = 0;; ++succeeding) {
///         const OomInjector failing(succeeding);
///         Act();
///         if (!failing.Fired()) { break; }   // Act() needs no more allocations than these
///     }
///
/// Test macros allocate too, so check the result after the object is destroyed, or after its only failure has happened.
class OomInjector {
public:
    explicit OomInjector(int succeeding, FailureExtent extent = FailureExtent::Once, Memory memory = Memory::OfNew);
    ~OomInjector();

    OomInjector(const OomInjector&) = delete;
    OomInjector& operator=(const OomInjector&) = delete;

    bool Fired() const;

private:
    Memory m_memory;
};

/// Needed once per process before SQLite's memory can fail, while no connection is open: wraps SQLite's allocator, and
/// switches off SQLite's caches of small pieces and of pages, so that each of its allocations can fail. Throws
/// std::runtime_error if SQLite rejects the change.
void WrapSqliteAllocator();

/// Observes what the running thread requests from operator new. Only the newest object may be used.
class LargestAllocation {
public:
    LargestAllocation();

    /// The size in bytes of the largest allocation since the object was constructed.
    std::size_t Size() const;
};

/// The bytes that the process currently holds from operator new, which SQLite does not use.
std::size_t LiveBytesOfNew();

} // namespace Morvik::sql::tests
