#!/bin/bash
# Runs every test: on this machine with the address and undefined-behaviour sanitizers, on the library as it ships, with
# the target's unsigned char and with its 32-bit widths, on several threads with the thread sanitizer, under the budgets
# of instructions and memory, with fuzzed inputs, and then on the target, 32-bit ARM, under emulation. The last line
# tells how many tests passed, how many did not, and how many cannot run under emulation. The tests of failing memory,
# disks and power, of contention and of damaged files run with the sanitizers; a few of them also on the target.
#
#   scripts/test.sh [PRESET...]      only these of: dev native unsigned-char m32 tsan budgets fuzz armhf

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

presets=("$@")
[ $# -gt 0 ] || presets=(dev native unsigned-char m32 tsan budgets fuzz armhf)

passed=0
failed=0
left_out=0
ended_badly=0

# A test that was skipped or not even built has not passed. Only what tests/armhf-excluded.txt names is left out.
run_tests()
{
    local preset=$1 results=$project/build/$1/test-results.xml status=0 total here out
    echo "== Testing ($preset)"
    rm -f "$results"
    ctest --preset "$preset" -j "$(nproc)" --output-junit "$results" || status=$?
    [ -s "$results" ] || fail "failed: testing ($preset: ctest ended with status $status and left no results)"
    total=$(grep -c '<testcase ' "$results" || true)
    here=$(grep -c '<testcase .* status="run">' "$results" || true)
    out=$(grep -c '<testcase .* status="disabled">' "$results" || true)
    passed=$((passed + here))
    left_out=$((left_out + out))
    failed=$((failed + total - here - out))
    echo "== $preset: $here of $total tests passed, $out left out"
    [ "$here" -gt 0 ] && [ "$status" -eq 0 ] || ended_badly=1
}

scripts/install-dependencies.sh test-all
for preset in "${presets[@]}"; do
    case $preset in
    armhf) step "Fetching the target's libraries" scripts/sysroot.sh armhf ;;
    m32) step "Fetching the 32-bit libraries" scripts/sysroot.sh i386 ;;
    esac
    step "Configuring ($preset)" quietly cmake --preset "$preset"
    step "Building ($preset)" quietly cmake --build --preset "$preset"
    run_tests "$preset"
done

counts="$passed passed, $failed failed"
[ "$left_out" -eq 0 ] || counts="$counts, $left_out skipped"
echo "$counts"
[ "$ended_badly" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
