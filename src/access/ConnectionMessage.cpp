#include "access/ConnectionMessage.h"

#include <sqlite3.h>

namespace Morvik::sql {

[[gnu::cold, gnu::noinline]] void RecordConnectionMessage(SqlError& record, sqlite3* handle)
{
    record.SetErrorMsg(sqlite3_errmsg(handle));
}

} // namespace Morvik::sql
