#pragma once

namespace Morvik::sql::tests {

/// Puts zeroes behind every page that SQLite holds in memory. A damaged page may make SQLite read a few bytes past its
/// end, where its own pointers stand otherwise, and then two readers of the same file differ. Call it before the first
/// connection is opened; further calls do nothing.
void PadPages();

} // namespace Morvik::sql::tests
