#pragma once

#include <iosfwd>

namespace Morvik::sql {

class SqlBuffer;

/// Whether a default stream currently writes numbers as std::to_chars does: neither a facet of the process-wide C++
/// locale nor the rounding mode changes them.
bool StreamsWritePlainNumbers();

/// Appends the text that `insert` writes for `value` to a new default stream, up to the first exception of a facet.
/// Returns whether there was any text. Throws std::bad_alloc and nothing else.
using StreamInsertion = void (*)(std::ostream& stream, const void* value);
bool AppendStreamed(SqlBuffer& text, StreamInsertion insert, const void* value);

} // namespace Morvik::sql
