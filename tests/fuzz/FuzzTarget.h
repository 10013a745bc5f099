#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Tries one input of any bytes. Returns 0, or ends the program through Morvik::sql::tests::ReportFinding(). Every
/// target defines this function. libFuzzer calls it with generated inputs, the ordinary tests with the corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Morvik::sql::tests {

/// Prints the finding and ends the program, so that libFuzzer keeps the input.
[[noreturn]] void ReportFinding(const std::string& finding);

/// Reports `what` with both texts unless they are equal. Bytes that cannot be printed are written as \xNN.
void RequireSame(const std::string& what, const std::string& actual, const std::string& expected);

/// Tells libFuzzer that the input made `feature` happen, so that it keeps inputs that reach new code in SQLite, which
/// it cannot observe. Has no other effect.
void CountFeature(const std::string& feature);

} // namespace Morvik::sql::tests
