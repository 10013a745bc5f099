#pragma once

#include <cstddef>

namespace Morvik::sql::bench {

/// Counts the memory in use by C++ and by SQLite together, in a program that links this file: it replaces the global
/// operator new and delete and stands before SQLite's allocator.
class CountedMemory {
public:
    /// Puts the counting allocator before SQLite's own. To be called before SQLite is used.
    static void CountSqlite();

    /// Starts counting anew: what is in use now does not count.
    CountedMemory();

    /// The highest number of bytes in use since then, beyond those in use at the start.
    std::size_t Peak() const;

private:
    std::size_t m_start;
};

} // namespace Morvik::sql::bench
