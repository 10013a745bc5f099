#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Morvik::sql {

/// Appends the number to `text` as a fresh default stream writes it under the process-wide C++ locale: a locale with
/// digit grouping or a decimal comma shows. Throws std::bad_alloc rather than leave a number cut short.
void AppendNumber(std::string& text, std::int32_t number);
void AppendNumber(std::string& text, std::uint32_t number);
void AppendNumber(std::string& text, double number);

/// The bytes to reserve for what AppendNumber() appends in the classic locale: never too few, and at most a few too
/// many.
std::size_t NumberSize(std::int32_t number);
std::size_t NumberSize(double number);

} // namespace Morvik::sql
