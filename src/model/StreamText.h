#pragma once

#include <iosfwd>

namespace Morvik::sql {

class SqlBuffer;

/// Whether a default stream writes numbers as std::to_chars does at this moment: neither a facet of the process-wide
/// C++ locale nor the rounding mode changes them.
bool StreamsWritePlainNumbers();

/// Appends what `insert` writes of `value` to a new default stream, up to the first exception of a facet, and returns
/// whether there was any text. Throws std::bad_alloc and nothing else.
using StreamInsertion = void (*)(std::ostream& stream, const void* value);
bool AppendStreamed(SqlBuffer& text, StreamInsertion insert, const void* value);

} // namespace Morvik::sql
