#!/bin/bash
# Checks that the tests reach every line and every function of src/ and include/, and at least 97 % of the branches.
#
#   scripts/coverage.sh [PROGRAM...]       also counts what these test programs reach; each is a target of the build
#
# These branches are not counted: those that the compiler adds to pass on exceptions (--exclude-throw-branches), and
# those of lines without code, such as closing braces (--exclude-unreachable-branches). Lines that no test can reach are
# listed with the reason in tests/coverage/unreached.txt. The report is build/unsigned-char/report/index.html.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

for argument in "$@"; do
    [[ $argument != -* ]] || fail "unknown argument \"$argument\"; it takes names of test programs (--help explains)"
done
build=$project/build/unsigned-char
report=$build/report
programs=(tkosqllite_tests tkosqllite_internals_tests "$@")

run_programs()
{
    local name program
    # Removes the counts of an earlier run.
    find "$build" -name '*.gcda' -delete
    for name in "${programs[@]}"; do
        program=$(find "$build/tests" -name "$name" -type f)
        "$program" --gtest_brief=1 || return
    done
}

scripts/install-dependencies.sh all
step "Configuring (unsigned-char)" quietly cmake --preset unsigned-char
step "Building (unsigned-char)" quietly cmake --build --preset unsigned-char --target "${programs[@]}"
step "Testing (coverage)" quietly run_programs
rm -rf "$report"
mkdir -p "$report"
step "Counting" quietly gcovr --root "$project" --filter src/ --filter include/ -j "$(nproc)" \
    --exclude-throw-branches --exclude-unreachable-branches --json "$report/coverage.json" \
    --html-details "$report/index.html" "$build/src/CMakeFiles/tkosqllite_objects.dir" "$build/tests"
step "Checking what the tests reach" \
    python3 tests/check_listed.py coverage "$report/coverage.json" tests/coverage/unreached.txt | tee "$report/summary"
[ $# -gt 0 ] || scripts/record.sh docs/reliability.md coverage "$(grep ' branches (' "$report/summary")"
