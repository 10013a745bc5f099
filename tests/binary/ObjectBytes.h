#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

namespace Morvik::sql::tests {

/// The value of type T at `offset` bytes into an object, whatever type the object declares there.
template <typename T>
T ReadAt(const void* object, std::size_t offset)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
    return value;
}

/// The offset in bytes of a part of the object that begins at `object`.
template <typename Part>
std::ptrdiff_t OffsetIn(const void* object, const Part& part)
{
    return reinterpret_cast<const char*>(std::addressof(part)) - static_cast<const char*>(object);
}

} // namespace Morvik::sql::tests
