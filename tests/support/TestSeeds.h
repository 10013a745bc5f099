#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The seeds of generated tests: a fixed seed, so that a run can be repeated, and the number in the environment
/// variable TKOSQLLITE_TEST_SEED if it is set, so that many runs try many inputs.
inline std::vector<std::uint64_t> TestSeeds()
{
    std::vector<std::uint64_t> seeds{20240229};
    if (const char* const given = std::getenv("TKOSQLLITE_TEST_SEED"); given != nullptr) {
        seeds.push_back(std::strtoull(given, nullptr, 10));
    }
    return seeds;
}

/// The text in a failure message with which the input can be generated again.
inline std::string Describe(std::uint64_t seed)
{
    return "TKOSQLLITE_TEST_SEED=" + std::to_string(seed);
}

} // namespace Morvik::sql::tests
