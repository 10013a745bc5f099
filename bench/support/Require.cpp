#include "support/Require.h"

#include <cstdio>
#include <cstdlib>

namespace Morvik::sql::bench {

void Require(bool right, const char* what, const char* detail)
{
    if (!right) {
        std::fprintf(stderr, "\nwrong result: %s %s\n", what, detail);
        std::exit(EXIT_FAILURE);
    }
}

} // namespace Morvik::sql::bench
