#include "support/Require.h"

#include <cstdio>
#include <cstdlib>

namespace Morvik::sql::bench {

void Require(bool right, const char* what, const char* detail, std::source_location where)
{
    if (right) {
        return;
    }
    std::fprintf(stderr, "\n%s:%u: wrong result: %s %s\n", where.file_name(), static_cast<unsigned>(where.line()), what,
                 detail);
    std::exit(EXIT_FAILURE);
}

} // namespace Morvik::sql::bench
