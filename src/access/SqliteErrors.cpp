#include "access/SqliteErrors.h"

#include <new>
#include <stdexcept>

#include <sqlite3.h>

namespace Morvik::sql {

[[gnu::cold, gnu::noinline]] void SetErrorMsgFrom(sqlite3* handle, SqlError& error)
{
    error.SetErrorMsg(sqlite3_errmsg(handle));
}

void ThrowNullText()
{
    throw std::logic_error("SQL NULL has no text.");
}

void ThrowOutOfMemory()
{
    throw std::bad_alloc();
}

} // namespace Morvik::sql
