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
#
# If the environment sets TKOSQLLITE_FIGURES, each form begins with an empty build folder. Its duration, and what the
# fault tests of dev counted, are written into README.md, CONTRIBUTING.md and docs/reliability.md.

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

# record_counts KEY SUITE: writes into the row KEY the number of the suite's tests, and for each property that they
# recorded, the sum, the least and the greatest value.
record_counts()
{
    local counts
    counts=$(cat build/dev/results/*/*"$2.xml" | awk -F '"' '
        /<testcase / { ++tests }
        /<property / {
            if (!($2 in sum)) { names[++count] = $2; least[$2] = greatest[$2] = $4 }
            sum[$2] += $4
            if ($4 < least[$2]) { least[$2] = $4 }
            if ($4 > greatest[$2]) { greatest[$2] = $4 }
        }
        END {
            printf "%d tests pass", tests
            for (i = 1; i <= count; ++i) {
                name = names[i]
                range = least[name] == greatest[name] ? "" : " (" least[name] " to " greatest[name] " each)"
                printf "; %d %s%s", sum[name], name, range
            }
        }' | tr _ ' ')
    scripts/record.sh docs/reliability.md "$1" "$counts"
}

# record_figures PRESET SECONDS
record_figures()
{
    scripts/record.sh CONTRIBUTING.md "\`$1\`" "$(duration "$2")"
    [ "$1" = dev ] || return 0
    scripts/record.sh README.md "\`scripts/test.sh\`" "$(duration "$2")"
    record_counts 'failing allocations' MemoryFaultTest
    record_counts 'failing calls on files' FailingCallTest
    record_counts 'power loss' Durable.PowerLossTest
    record_counts 'power loss, unsafe settings' Lossy.PowerLossTest
    record_counts 'killed processes' KilledWriterTest
}

scripts/install-dependencies.sh "$needs"
for preset in "${presets[@]}"; do
    case $preset in
    armhf) step "Fetching the target's libraries" scripts/sysroot.sh armhf ;;
    m32) step "Fetching the 32-bit libraries" scripts/sysroot.sh i386 ;;
    no-dqs) step "Building a SQLite without double-quoted texts" scripts/sqlite-without-dqs.sh ;;
    esac
    [ -z "${TKOSQLLITE_FIGURES:-}" ] || rm -rf "build/$preset"
    begin=$SECONDS
    step "Configuring ($preset)" quietly cmake --preset "$preset"
    step "Building ($preset)" cmake --build --preset "$preset"
    run_tests "$preset"
    [ -z "${TKOSQLLITE_FIGURES:-}" ] || [ "$ended_badly" -gt 0 ] || record_figures "$preset" $((SECONDS - begin))
done
[ "$*:$ended_badly" != --all:0 ] || scripts/record.sh CONTRIBUTING.md "\`--all\`" "$(duration "$SECONDS")"

counts="$passed passed, $failed failed"
[ "$left_out" -eq 0 ] || counts="$counts, $left_out skipped"
echo "$counts"
[ "$ended_badly" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
