#pragma once

#include <cstddef>

namespace Morvik::sql::tests {

/// The bytes that the complete process, SQLite included, currently holds from malloc.
std::size_t LiveBytes();

} // namespace Morvik::sql::tests
