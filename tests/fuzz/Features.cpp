#include "fuzz/Features.h"

#include <array>
#include <cstdint>
#include <functional>

namespace Morvik::sql::tests {

namespace {

// libFuzzer finds the counters by the name of their section, and clears them before every input.
[[gnu::section("__libfuzzer_extra_counters")]] std::array<std::uint8_t, 4096> counters;

} // namespace

void CountFeature(const std::string& feature)
{
    counters[std::hash<std::string>()(feature) % counters.size()] = 1;
}

} // namespace Morvik::sql::tests
