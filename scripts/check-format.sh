#!/bin/bash
# Checks that every source is formatted as .clang-format says. "clang-format -i FILE" mends one that is not.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

format()
{
    find include src examples tests bench \( -name '*.h' -o -name '*.cpp' \) -print0 |
        xargs -0 clang-format --dry-run -Werror
}

step "Checking the format" format
