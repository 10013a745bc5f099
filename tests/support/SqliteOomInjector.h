#pragma once

#include "support/OomInjector.h"

namespace Morvik::sql::tests {

/// While the object lives, SQLite's allocations in the running thread fail: the first `succeeding` allocations succeed,
/// the next one fails, and with FailureExtent::ForEver so do all that follow. Install() must have been called. Fired()
/// tells whether the failing allocation was requested.
///
///     SqliteOomInjector::Install();
///     const SqliteOomInjector failing(3, FailureExtent::ForEver);
///     EXPECT_FALSE(command.Execute(sql));   // code 7
///     EXPECT_TRUE(failing.Fired());
class SqliteOomInjector {
public:
    /// Wraps SQLite's allocator, and switches off SQLite's caches of small pieces and of pages, so that each of its
    /// allocations can fail. No connection may be open; once per process is enough. Throws std::runtime_error if SQLite
    /// rejects the change.
    static void Install();

    explicit SqliteOomInjector(int succeeding, FailureExtent extent = FailureExtent::Once);
    ~SqliteOomInjector();

    SqliteOomInjector(const SqliteOomInjector&) = delete;
    SqliteOomInjector& operator=(const SqliteOomInjector&) = delete;

    bool Fired() const;
};

} // namespace Morvik::sql::tests
