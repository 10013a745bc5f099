#include "fuzz/FuzzTarget.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>

namespace Morvik::sql::tests {

namespace {

// libFuzzer finds the counters by the name of their section, and clears them before every input.
[[gnu::section("__libfuzzer_extra_counters")]] std::array<std::uint8_t, 4096> counters;

} // namespace

void ReportFinding(const std::string& finding)
{
    std::cerr << "FINDING: " << finding << std::endl;
    std::abort();
}

std::string Printable(const std::string& text)
{
    static constexpr char Digits[] = "0123456789ABCDEF";
    std::string printable;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F && c != '\\') {
            printable += c;
        } else {
            printable += {'\\', 'x', Digits[byte >> 4], Digits[byte & 15]};
        }
    }
    return printable;
}

void RequireSame(const std::string& what, const std::string& actual, const std::string& expected)
{
    if (actual != expected) {
        ReportFinding(what + " is [" + Printable(actual) + "] in place of [" + Printable(expected) + "]");
    }
}

void CountFeature(const std::string& feature)
{
    counters[std::hash<std::string>()(feature) % counters.size()] = 1;
}

} // namespace Morvik::sql::tests
