#pragma once

#include <string>
#include <vector>

struct sqlite3_value;

namespace Morvik::sql {

/// Replaces `text` by the value's text up to its first zero byte, using its memory again. Throws std::logic_error for
/// NULL.
void ReadText(sqlite3_value* value, std::string& text);

/// Replaces `bytes` by the value's bytes, using its memory again.
void ReadBytes(sqlite3_value* value, std::vector<char>& bytes);

} // namespace Morvik::sql
