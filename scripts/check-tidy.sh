#!/bin/bash
# Checks the library and the examples with clang-tidy, by the rules of .clang-tidy.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

tidy()
{
    { find src examples -name '*.cpp' -print0; find include -name '*.h' -print0; } |
        xargs -0 -n 1 -P "$(nproc)" clang-tidy -p build/clang --quiet 2>&1 |
        sed '/ warnings\{0,1\} generated\.$/d' # clang-tidy also counts suppressed warnings
}

step "Configuring with clang" quietly cmake --preset clang
step "Checking with clang-tidy" quietly tidy
