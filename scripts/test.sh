#!/bin/bash
# Builds and runs the tests. The last line gives the number of tests that passed, that failed, and that cannot run under
# emulation.
#
#   scripts/test.sh                  every test on this machine, with the address and undefined-behaviour sanitizers (dev)
#   scripts/test.sh --all            all of the forms below
#   scripts/test.sh PRESET...        some of the forms
#
# dev: see above. native: the release library. unsigned-char: with unsigned char, as on the target. m32: with 32-bit
# types, as on the target. no-dqs: with a SQLite without double-quoted texts. tsan: several threads, with the thread
# sanitizer. budgets: limits for the library's instructions and memory. fuzz: fuzzed inputs, 20 seconds for each target.
# armhf: the target, 32-bit ARM, under emulation. The tests of failing memory, disks and power, of contention and of
# damaged files run in dev and native, a few also in armhf.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

forms=(dev native unsigned-char m32 no-dqs tsan budgets fuzz armhf)
presets=("$@")
case "$*" in
--all) presets=("${forms[@]}") ;;
'') presets=(dev) ;;
esac
needs='test'
for preset in "${presets[@]}"; do
    case " ${forms[*]} " in
    *" $preset "*) ;;
    *) fail "\"$preset\" is none of --all ${forms[*]}" ;;
    esac
    case $preset in
    dev | unsigned-char | tsan) ;;
    *) needs=test-all ;;
    esac
done

passed=0
failed=0
left_out=0
ended_badly=0

run_ctest()
{
    local results=$1 preset=$2
    if [ -t 1 ]; then
        ctest --preset "$preset" -j "$(nproc)" --output-junit "$results" --progress
    else
        ctest --preset "$preset" -j "$(nproc)" --output-junit "$results" | sed -u '/^ *Start /d'
    fi
}

# A test that was skipped or not even built has not passed. Only the tests in tests/armhf-excluded.txt may be left out.
run_tests()
{
    local preset=$1 build=$project/build/$1 results=$project/build/$1/test-results.xml status=0 counts here not out
    echo "== Testing ($preset)"
    rm -rf "$results" "$build/results"
    run_ctest "$results" "$preset" || status=$?
    [ -s "$results" ] || fail "failed: testing ($preset: ctest ended with status $status and left no results)"
    counts=$(python3 tests/count_results.py "$build" "$results") || fail "failed: counting the results of $preset"
    read -r here not out <<<"$counts"
    passed=$((passed + here))
    failed=$((failed + not))
    left_out=$((left_out + out))
    echo "== $preset: $here of $((here + not + out)) tests passed, $out left out"
    [ "$here" -gt 0 ] && [ "$status" -eq 0 ] || ended_badly=1
}

scripts/install-dependencies.sh "$needs"
for preset in "${presets[@]}"; do
    case $preset in
    armhf) step "Fetching the target's libraries" scripts/sysroot.sh armhf ;;
    m32) step "Fetching the 32-bit libraries" scripts/sysroot.sh i386 ;;
    no-dqs) step "Building a SQLite without double-quoted texts" scripts/sqlite-without-dqs.sh ;;
    esac
    step "Configuring ($preset)" quietly cmake --preset "$preset"
    step "Building ($preset)" cmake --build --preset "$preset"
    run_tests "$preset"
done

counts="$passed passed, $failed failed"
[ "$left_out" -eq 0 ] || counts="$counts, $left_out skipped"
echo "$counts"
[ "$ended_badly" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
