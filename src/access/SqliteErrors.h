#pragma once

#include <sql/SqlError.h>

struct sqlite3;

namespace Morvik::sql {

/// Stores the message of the connection's last failure in `error` and keeps its code.
void SetErrorMsgFrom(sqlite3* handle, SqlError& error);

/// Throws std::logic_error, because a caller read an SQL NULL as text.
[[noreturn]] void ThrowNullText();

/// Throws std::bad_alloc, because SQLite had no memory for a text or for bytes.
[[noreturn]] void ThrowOutOfMemory();

} // namespace Morvik::sql
