#pragma once

namespace Morvik::sql {

/// Throws for a value that SQLite gave no text or bytes for: std::logic_error for NULL, which has no text, and
/// std::bad_alloc for every other storage class, where only SQLite's memory can have run out.
[[noreturn]] void ThrowMissingData(int storageClass);

} // namespace Morvik::sql
