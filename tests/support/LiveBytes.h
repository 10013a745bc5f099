#pragma once

#include <cstddef>

#include "support/AddressSanitizer.h"

#if TKOSQLLITE_ADDRESS_SANITIZER
// Declared here, because GCC has the function but no header for it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace Morvik::sql::tests {

/// The bytes that the complete process, SQLite included, currently holds from malloc.
inline std::size_t LiveBytes()
{
#if TKOSQLLITE_ADDRESS_SANITIZER
    return __sanitizer_get_current_allocated_bytes(); // mallinfo2 does not count this allocator
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

} // namespace Morvik::sql::tests
