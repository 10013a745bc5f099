#pragma once

#include <sql/SqlError.h>

struct sqlite3;

namespace Morvik::sql {

/// Stores the message of the connection's last failure beside the code in `error`.
void SetErrorMsgFrom(sqlite3* handle, SqlError& error);

/// Throws std::logic_error: an SQL NULL was asked for its text.
[[noreturn]] void ThrowNullText();

/// Throws std::bad_alloc: SQLite had no memory for a text or for bytes.
[[noreturn]] void ThrowOutOfMemory();

} // namespace Morvik::sql
