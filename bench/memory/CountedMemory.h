#pragma once

#include <cstddef>

namespace Morvik::sql::bench {

/// Counts the memory that C++ and SQLite use together. A program that links this file has its global operator new and
/// delete replaced, and SQLite's allocator wrapped.
class CountedMemory {
public:
    /// Wraps SQLite's allocator in the counting allocator. Must be called before SQLite is used.
    static void CountSqlite();

    /// Restarts counting from 0: memory that is in use now does not count.
    CountedMemory();

    /// The highest number of bytes in use since the last start, not counting those in use at the start.
    std::size_t Peak() const;

private:
    std::size_t m_start;
};

} // namespace Morvik::sql::bench
