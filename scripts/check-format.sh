#!/bin/bash
# Checks that every source is formatted as .clang-format says ("clang-format -i FILE" formats it), and that the layers
# of the library are separate: src/model and src/access include neither each other nor src/api, SQLite is called in
# src/access only, and SQL text is made in src/model only.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

format()
{
    find include src examples tests bench \( -name '*.h' -o -name '*.cpp' \) -print0 |
        xargs -0 clang-format --dry-run -Werror
}

step "Checking the format" format

# Prints the lines that break the rules of their layer, and fails if there are any.
layers()
{
    local found=0
    grep -rnE '#include "(access|api)/' src/model && found=1
    grep -rnE '#include "(model|api)/' src/access && found=1
    grep -rnE 'sqlite3_[a-z]' src/api src/model && found=1
    grep -rnE '"(SELECT|INSERT|UPDATE|DELETE|CREATE|DROP|ALTER) ' src/api src/access && found=1
    return "$found"
}

step "Checking the layers" layers
