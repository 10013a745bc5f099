#include "fuzz/Finding.h"

#include <cstdlib>
#include <iostream>

namespace Morvik::sql::tests {

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

} // namespace Morvik::sql::tests
