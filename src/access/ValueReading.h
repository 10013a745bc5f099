#pragma once

#include <span>
#include <string_view>

struct sqlite3_value;

namespace Morvik::sql {

/// The value's text up to its first zero byte, owned by SQLite. Throws std::logic_error for NULL.
std::string_view TextOf(sqlite3_value* value);

/// The value's bytes, owned by SQLite; empty for NULL.
std::span<const char> BytesOf(sqlite3_value* value);

} // namespace Morvik::sql
