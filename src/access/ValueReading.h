#pragma once

#include <span>
#include <string_view>

struct sqlite3_value;

namespace Morvik::sql {

/// The text, up to its first zero byte and owned by SQLite, of a value of the given storage class, which must have been
/// asked for before. Throws std::logic_error for NULL.
std::string_view TextOf(sqlite3_value* value, int storageClass);

/// The value's bytes, owned by SQLite; empty for NULL.
std::span<const char> BytesOf(sqlite3_value* value);

} // namespace Morvik::sql
