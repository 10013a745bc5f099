#!/bin/bash
# Checks the library with cppcheck and with GCC's -fanalyzer, which is experimental for C++. Every finding must be
# fixed, or suppressed with the reason in tests/analyzers/suppressions.txt.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

findings=$project/build/analyzers.txt

export LC_ALL=C # ASCII quotation marks in the findings

run_cppcheck()
{
    cppcheck --enable=warning,performance,portability,style --std=c++20 --language=c++ --quiet \
        --template='{file}:{line}:{column}: warning: {message} [{id}]' --template-location='' \
        -I include -I src include src 2>>"$findings"
}

run_gcc()
{
    find src -name '*.cpp' -print0 | sort -z |
        xargs -0 -I SOURCE g++ -std=c++20 -O2 -fanalyzer -fdiagnostics-plain-output -I include -I src \
            -c SOURCE -o /dev/null 2>>"$findings"
}

scripts/install-dependencies.sh all
mkdir -p build
: >"$findings"
step "Checking with cppcheck" run_cppcheck
step "Checking with GCC's analyzer" run_gcc
step "Looking for findings that are not suppressed" \
    python3 tests/check_listed.py analyzers "$findings" tests/analyzers/suppressions.txt
