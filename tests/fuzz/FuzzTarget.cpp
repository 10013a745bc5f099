#include "fuzz/FuzzTarget.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>

#include "support/Quoting.h"

namespace Morvik::sql::tests {

namespace {

// libFuzzer finds the counters by the name of their section, and clears them before every input.
[[gnu::section("__libfuzzer_extra_counters")]] std::array<std::uint8_t, 4096> counters;

std::string Printable(const std::string& text)
{
    std::string printable;
    for (const char c : text) {
        printable += c >= ' ' && c <= '~' && c != '\\' ? std::string(1, c) : "\\x" + Hex({&c, 1});
    }
    return printable;
}

} // namespace

void ReportFinding(const std::string& finding)
{
    std::cerr << "FINDING: " << finding << std::endl;
    std::abort();
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
