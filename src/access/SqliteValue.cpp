#include "access/SqliteValue.h"

#include <cstddef>

#include <sqlite3.h>

#include "access/SqliteErrors.h"

namespace Morvik::sql {

static_assert(static_cast<int>(StorageClass::Integer) == SQLITE_INTEGER &&
              static_cast<int>(StorageClass::Float) == SQLITE_FLOAT &&
              static_cast<int>(StorageClass::Text) == SQLITE_TEXT &&
              static_cast<int>(StorageClass::Blob) == SQLITE_BLOB &&
              static_cast<int>(StorageClass::Null) == SQLITE_NULL);

StorageClass SqliteValue::Type() const
{
    return m_value != nullptr ? static_cast<StorageClass>(sqlite3_value_type(m_value)) : StorageClass::Missing;
}

int SqliteValue::Integer() const
{
    return sqlite3_value_int(m_value);
}

long long SqliteValue::Integer64() const
{
    return sqlite3_value_int64(m_value);
}

double SqliteValue::Real() const
{
    return sqlite3_value_double(m_value);
}

std::string_view SqliteValue::Text() const
{
    const unsigned char* text = sqlite3_value_text(m_value);
    if (text == nullptr) {
        ThrowOutOfMemory();
    }
    return reinterpret_cast<const char*>(text);
}

std::span<const char> SqliteValue::Blob() const
{
    // The length is read first, because reading it may convert the value; the pointer must be that of the converted
    // value.
    const int length = sqlite3_value_bytes(m_value);
    const void* bytes = sqlite3_value_blob(m_value);
    if (bytes == nullptr) [[unlikely]] {
        if (length > 0) {
            ThrowOutOfMemory();
        }
        return {};
    }
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

} // namespace Morvik::sql
