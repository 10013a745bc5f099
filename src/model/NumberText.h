#pragma once

#include <cstdint>
#include <string>

namespace Morvik::sql {

/// Appends the number to `text` as a fresh default stream writes it under the process-wide C++ locale: a locale with
/// digit grouping or a decimal comma shows. Throws std::bad_alloc rather than leave a number cut short.
void AppendNumber(std::string& text, std::int32_t number);
void AppendNumber(std::string& text, std::uint32_t number);
void AppendNumber(std::string& text, double number);

} // namespace Morvik::sql
