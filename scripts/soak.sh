#!/bin/bash
# The long forms of the tests: more rounds of failing memory, disks and power, of killed and of contending processes, of
# damaged files, the whole suite under valgrind, and then the fuzzers for as long as is left.
#
#   scripts/soak.sh [MINUTES]      (60 unless told; the fuzzers run for ten minutes each at least)

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

minutes=${1:-60}
[[ $minutes =~ ^[1-9][0-9]*$ ]] || fail "\"$minutes\" is no number of minutes"
least=600 # seconds for each fuzzer, however long the rest took
targets=(value-literals schema-text operations database-files)

fuzz()
{
    local seconds=$(((minutes * 60 - SECONDS) * $(nproc) / ${#targets[@]}))
    [ "$seconds" -ge "$least" ] || seconds=$least
    printf '%s\n' "${targets[@]}" |
        xargs -P "$(nproc)" -I '{}' tests/fuzz/run-fuzzer.sh '{}' "$seconds" "build/fuzz/found/{}"
}

scripts/install-dependencies.sh test-all
for preset in dev fuzz; do
    step "Configuring ($preset)" quietly cmake --preset "$preset"
    step "Building ($preset)" quietly cmake --build --preset "$preset"
done
step "Repeating the fault tests" env TKOSQLLITE_SOAK=1 ctest --preset dev -L soak -j "$(nproc)" --timeout 7200
scripts/memcheck.sh --all
step "Fuzzing" fuzz
echo "soaked for $((SECONDS / 60)) minutes without a finding"
