#pragma once

#include "support/FailingAllocation.h"

namespace Morvik::sql::tests {

/// Lets SQLite's own allocations of the running thread fail while the object lives: the one that follows after
/// `succeeding` others, and, for ever, those behind it too. Install() must have been called. Proves itself: Fired()
/// tells whether that allocation was asked for.
///
///     FailingSqliteMemory::Install();
///     const FailingSqliteMemory failing(3, FailureExtent::ForEver);
///     EXPECT_FALSE(command.Execute(sql));   // code 7
///     EXPECT_TRUE(failing.Fired());
class FailingSqliteMemory {
public:
    /// Stands between SQLite and its allocator, and switches off the stocks that SQLite keeps of small pieces and of
    /// pages, so that each of its allocations can fail. No connection may be open; once per process is enough. Throws
    /// std::runtime_error if SQLite refuses.
    static void Install();

    explicit FailingSqliteMemory(int succeeding, FailureExtent extent = FailureExtent::Once);
    ~FailingSqliteMemory();

    FailingSqliteMemory(const FailingSqliteMemory&) = delete;
    FailingSqliteMemory& operator=(const FailingSqliteMemory&) = delete;

    bool Fired() const;
};

} // namespace Morvik::sql::tests
