#pragma once

#include <cstddef>

namespace Morvik::sql::tests {

/// Which allocations fail: one, or that one and all that follow it.
enum class FailureExtent { Once, ForEver };

/// Lets allocations of the running thread fail with std::bad_alloc while the object lives: the one that follows after
/// `succeeding` others, and, for ever, those behind it too. The program that links it defines operator new; SQLite's
/// own memory comes from malloc and is not concerned (FailingSqliteMemory is for that). Proves itself: Fired() tells
/// whether that allocation was asked for.
///
///     for (int succeeding = 0;; ++succeeding) {
///         const FailingAllocation failing(succeeding);
///         Act();
///         if (!failing.Fired()) { break; }   // Act() needs no more allocations than these
///     }
///
/// Test macros allocate too, so look at the outcome after the object is gone, or after its one failure fired.
class FailingAllocation {
public:
    explicit FailingAllocation(int succeeding, FailureExtent extent = FailureExtent::Once);
    ~FailingAllocation();

    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    bool Fired() const;
};

/// Watches what the running thread asks operator new for while the object lives.
class LargestAllocation {
public:
    LargestAllocation();
    ~LargestAllocation();

    LargestAllocation(const LargestAllocation&) = delete;
    LargestAllocation& operator=(const LargestAllocation&) = delete;

    /// The bytes of the largest piece.
    std::size_t Size() const;
};

/// The bytes that the process holds from operator new at the moment: everything of C++, and nothing of SQLite's.
std::size_t LiveBytesOfNew();

} // namespace Morvik::sql::tests
