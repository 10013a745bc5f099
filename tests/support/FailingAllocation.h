#pragma once

#include <cstddef>

namespace Morvik::sql::tests {

/// Lets one allocation of the running thread fail with std::bad_alloc while the object lives: the one that follows
/// after `succeeding` others. The program that links it defines operator new; SQLite's own memory comes from malloc and
/// is not concerned. Proves itself: Fired() tells whether that allocation was asked for.
///
///     for (int succeeding = 0;; ++succeeding) {
///         const FailingAllocation failing(succeeding);
///         Act();
///         if (!failing.Fired()) { break; }   // Act() needs no more allocations than these
///     }
///
/// Test macros allocate too, so look at the outcome after the object is gone, or after it fired.
class FailingAllocation {
public:
    explicit FailingAllocation(int succeeding);
    ~FailingAllocation();

    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    bool Fired() const;
};

/// The bytes that the process holds from operator new at the moment: everything of C++, and nothing of SQLite's.
std::size_t LiveBytesOfNew();

} // namespace Morvik::sql::tests
