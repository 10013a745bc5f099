#pragma once

#include <cstddef>

namespace Morvik::sql::tests {

/// Which allocations fail: one, or that one and all that follow it.
enum class FailureExtent { Once, ForEver };

/// While the object lives, allocations of the running thread fail with std::bad_alloc: the first `succeeding`
/// allocations succeed, the next one fails, and with FailureExtent::ForEver so do all that follow. The program that
/// links this file defines operator new. SQLite's memory comes from malloc and does not fail (use SqliteOomInjector).
/// Fired() tells whether the failing allocation was requested.
///
///     for (int succeeding = 0;; ++succeeding) {
///         const OomInjector failing(succeeding);
///         Act();
///         if (!failing.Fired()) { break; }   // Act() needs no more allocations than these
///     }
///
/// Test macros allocate too, so check the result after the object is destroyed, or after its one failure fired.
class OomInjector {
public:
    explicit OomInjector(int succeeding, FailureExtent extent = FailureExtent::Once);
    ~OomInjector();

    OomInjector(const OomInjector&) = delete;
    OomInjector& operator=(const OomInjector&) = delete;

    bool Fired() const;
};

/// Observes what the running thread requests from operator new while the object lives.
class LargestAllocation {
public:
    LargestAllocation();
    ~LargestAllocation();

    LargestAllocation(const LargestAllocation&) = delete;
    LargestAllocation& operator=(const LargestAllocation&) = delete;

    /// The size in bytes of the largest allocation.
    std::size_t Size() const;
};

/// The bytes that the process currently holds from operator new: all of C++, nothing of SQLite.
std::size_t LiveBytesOfNew();

} // namespace Morvik::sql::tests
