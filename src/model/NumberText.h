#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace Morvik::sql {

class StatementText;

/// Whether a default stream writes numbers as std::to_chars does at this moment: neither a facet of the process-wide
/// C++ locale nor the rounding mode changes them.
bool StreamsWritePlainNumbers();

/// Appends the number as a new default stream writes it under the process-wide C++ locale: a locale with digit
/// groups or a decimal comma shows. Returns whether there was any text; a facet of the application's locale may write
/// none, or throw. Throws std::bad_alloc rather than leave a number cut short.
bool AppendNumber(StatementText& text, std::int32_t number);
bool AppendNumber(StatementText& text, double number);

/// Appends what `insert` writes of `value` to a new default stream, up to the first exception of a facet, and returns
/// whether there was any text. Throws std::bad_alloc and nothing else.
using StreamInsertion = void (*)(std::ostream& stream, const void* value);
bool AppendStreamed(StatementText& text, StreamInsertion insert, const void* value);

/// The bytes that AppendNumber() appends in the classic locale: never too few, and at most a few too many.
std::size_t NumberSize(std::int32_t number);
std::size_t NumberSize(double number);

} // namespace Morvik::sql
