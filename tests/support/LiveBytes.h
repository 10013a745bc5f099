#pragma once

#include <cstddef>

namespace Morvik::sql::tests {

/// The bytes that the whole process, SQLite included, holds from malloc at the moment.
std::size_t LiveBytes();

} // namespace Morvik::sql::tests
