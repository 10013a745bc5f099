#pragma once

#include <cstddef>
#include <cstdint>

/// Tries one input, whatever its bytes. Returns 0, or ends the program through Morvik::sql::tests::ReportFinding().
/// Every target defines it; libFuzzer calls it with inputs of its own making, the ordinary tests with the corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
