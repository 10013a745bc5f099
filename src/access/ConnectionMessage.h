#pragma once

#include <sql/SqlError.h>

struct sqlite3;

namespace Morvik::sql {

/// Stores SQLite's message of the connection's last failure beside the code that stands in the record.
void RecordConnectionMessage(SqlError& record, sqlite3* handle);

} // namespace Morvik::sql
