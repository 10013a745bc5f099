#pragma once

#include <cstddef>
#include <cstdint>

namespace Morvik::sql {

class StatementText;

/// Appends the number as a fresh default stream writes it under the process-wide C++ locale: a locale with digit
/// groups or a decimal comma shows. Throws std::bad_alloc rather than leave a number cut short.
void AppendNumber(StatementText& text, std::int32_t number);
void AppendNumber(StatementText& text, std::uint32_t number);
void AppendNumber(StatementText& text, double number);

/// The bytes that AppendNumber() appends in the classic locale: never too few, and at most a few too many.
std::size_t NumberSize(std::int32_t number);
std::size_t NumberSize(double number);

} // namespace Morvik::sql
