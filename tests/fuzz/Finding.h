#pragma once

#include <string>

namespace Morvik::sql::tests {

/// Writes what was found and ends the program, upon which libFuzzer keeps the input.
[[noreturn]] void ReportFinding(const std::string& finding);

/// The text with every byte that a terminal would not show written as \xNN.
std::string Printable(const std::string& text);

/// Reports `what` with both texts unless they are equal.
void RequireSame(const std::string& what, const std::string& actual, const std::string& expected);

} // namespace Morvik::sql::tests
