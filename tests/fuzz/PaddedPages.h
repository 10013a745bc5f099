#pragma once

namespace Morvik::sql::tests {

/// Adds zeroes after every page that SQLite holds in memory. A damaged page may make SQLite read a few bytes past its
/// end. Without the zeroes, SQLite's own pointers are there, and two connections to the same file would read different
/// bytes. Call it before the first connection is opened; further calls do nothing.
void PadPages();

} // namespace Morvik::sql::tests
