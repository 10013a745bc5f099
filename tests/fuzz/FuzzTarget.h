#pragma once

#include <cstddef>
#include <cstdint>

/// Tries one input of any bytes. Returns 0, or ends the program through Morvik::sql::tests::ReportFinding(). Every
/// target defines this function. libFuzzer calls it with generated inputs, the ordinary tests with the corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
