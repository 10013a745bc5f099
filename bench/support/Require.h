#pragma once

#include <cstdio>
#include <cstdlib>

namespace Morvik::sql::bench {

/// Ends the program with a failure unless `right` holds, because the time of a wrong result is useless.
inline void Require(bool right, const char* what, const char* detail = "")
{
    if (!right) {
        std::fprintf(stderr, "\nwrong result: %s %s\n", what, detail);
        std::exit(EXIT_FAILURE);
    }
}

} // namespace Morvik::sql::bench
