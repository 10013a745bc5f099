#include "files/Transcript.h"

#include <algorithm>
#include <sstream>

namespace Morvik::sql::tests {

namespace {

std::string Text(const Answer& answer)
{
    std::ostringstream text;
    text << answer.operation << ": " << (answer.succeeded ? "succeeded" : "failed") << " with " << answer.code << " \""
         << answer.message << "\"";
    for (const std::string& row : answer.rows) {
        text << "\n    " << row;
    }
    return text.str();
}

} // namespace

std::string Difference(const Transcript& actual, const Transcript& expected)
{
    const auto [first, other] = std::ranges::mismatch(actual, expected);
    if (first == actual.end() && other == expected.end()) {
        return {};
    }
    const std::string end = "the end";
    return (first != actual.end() ? Text(*first) : end) + "\n  in place of\n" +
           (other != expected.end() ? Text(*other) : end);
}

} // namespace Morvik::sql::tests
