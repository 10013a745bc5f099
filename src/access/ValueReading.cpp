#include "access/ValueReading.h"

#include <sqlite3.h>

#include "access/MissingData.h"

namespace Morvik::sql {

void ReadText(sqlite3_value* value, std::string& text)
{
    const unsigned char* characters = sqlite3_value_text(value);
    if (characters == nullptr) {
        ThrowMissingData(sqlite3_value_type(value));
    }
    text = reinterpret_cast<const char*>(characters);
}

void ReadBytes(sqlite3_value* value, std::vector<char>& bytes)
{
    // The length is asked for first: that may convert the value, and the pointer must be the converted value's.
    const int length = sqlite3_value_bytes(value);
    const char* blob = static_cast<const char*>(sqlite3_value_blob(value));
    if (blob == nullptr && length > 0) {
        ThrowMissingData(SQLITE_BLOB);
    }
    bytes.assign(blob, blob + length);
}

} // namespace Morvik::sql
