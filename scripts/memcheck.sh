#!/bin/bash
# Runs the tests under valgrind, which must find nothing: no read of uninitialised memory, no access outside an
# allocation, no leak.
#
#   scripts/memcheck.sh [--all] [PROGRAM...]
#
# Runs the two main test programs, and each target of the build that is named. Without --all the slow tests are left out
# (tests/memcheck/excluded.txt). Programs that tests start are not checked.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

excluded='never|slow'
if [ "${1:-}" = --all ]; then
    excluded=never
    shift
fi
for argument in "$@"; do
    [[ $argument != -* ]] || fail "unknown argument \"$argument\"; it takes --all and test programs (--help explains)"
done
programs=(tkosqllite_tests tkosqllite_internals_tests "$@")
filter=-$(sed -nE "s/^($excluded) //p" tests/memcheck/excluded.txt | paste -sd :)

# An exclusion that matches no test is misspelt.
check_exclusions()
{
    local pattern name tests
    while read -r pattern; do
        tests=
        for name in tkosqllite_tests tkosqllite_internals_tests; do
            tests+=$("build/native/tests/$name" --gtest_list_tests --gtest_filter="$pattern" | grep '^  ' || true)
        done
        [ -n "$tests" ] || fail "tests/memcheck/excluded.txt: \"$pattern\" is no test"
    done < <(sed -nE 's/^(never|slow) //p' tests/memcheck/excluded.txt)
}

# The tests' operator new calls malloc, which valgrind checks. If valgrind also replaced operator new, no allocation
# would fail in the tests that make allocations fail.
run_program()
{
    local program
    program=$(find build/native/tests -name "$1" -type f)
    valgrind --quiet --error-exitcode=99 --suppressions=tests/memcheck/suppressions.supp --child-silent-after-fork=yes \
        --leak-check=full --errors-for-leak-kinds=definite,indirect --show-leak-kinds=definite,indirect \
        --soname-synonyms=somalloc=nouserintercepts \
        "$program" --gtest_brief=1 --gtest_filter="$filter"
}

scripts/install-dependencies.sh test-all
step "Configuring (native)" quietly cmake --preset native
step "Building (native)" quietly cmake --build --preset native --target "${programs[@]}"
check_exclusions
for program in "${programs[@]}"; do
    step "Looking over $program with valgrind" quietly run_program "$program"
done
