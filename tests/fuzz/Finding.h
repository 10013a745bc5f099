#pragma once

#include <string>

namespace Morvik::sql::tests {

/// Prints the finding and ends the program, so that libFuzzer keeps the input.
[[noreturn]] void ReportFinding(const std::string& finding);

/// The text, with every non-printable byte written as \xNN.
std::string Printable(const std::string& text);

/// Reports `what` with both texts unless they are equal.
void RequireSame(const std::string& what, const std::string& actual, const std::string& expected);

/// Tells libFuzzer that the input made `feature` happen, so that it keeps inputs that reach new code in SQLite, which
/// it cannot observe. Has no other effect.
void CountFeature(const std::string& feature);

} // namespace Morvik::sql::tests
