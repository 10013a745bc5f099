#include "access/MissingData.h"

#include <new>
#include <stdexcept>

#include <sqlite3.h>

namespace Morvik::sql {

void ThrowMissingData(int storageClass)
{
    if (storageClass == SQLITE_NULL) {
        throw std::logic_error("SQL NULL has no text.");
    }
    throw std::bad_alloc();
}

} // namespace Morvik::sql
