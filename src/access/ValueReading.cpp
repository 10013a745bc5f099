#include "access/ValueReading.h"

#include <cstddef>

#include <sqlite3.h>

#include "access/MissingData.h"

namespace Morvik::sql {

// A conversion that fails for lack of memory leaves the value NULL: its class would be asked for too late then.
std::string_view TextOf(sqlite3_value* value, int storageClass)
{
    const unsigned char* text = sqlite3_value_text(value);
    if (text == nullptr) {
        ThrowMissingData(storageClass);
    }
    return reinterpret_cast<const char*>(text);
}

std::span<const char> BytesOf(sqlite3_value* value)
{
    // The length is asked for first: that may convert the value, and the pointer must be the converted value's.
    const int length = sqlite3_value_bytes(value);
    const void* bytes = sqlite3_value_blob(value);
    if (bytes == nullptr && length > 0) {
        ThrowMissingData(SQLITE_BLOB);
    }
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

} // namespace Morvik::sql
