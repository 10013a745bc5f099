#!/bin/bash
# Runs the long forms of the tests: more rounds of failing memory, disks and power, of killed and of contending
# processes, and of damaged files; an emulated device whose power is cut; the slow tests under valgrind too; then the
# fuzzers for the rest of the time.
#
#   scripts/soak.sh [MINUTES]      (60 by default; each fuzzer runs for at least ten minutes)

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

minutes=${1:-60}
[[ $minutes =~ ^[1-9][0-9]*$ ]] || fail "\"$minutes\" is no number of minutes"
least=600 # seconds for each fuzzer, however long the other tests took
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
step "Cutting an emulated device's power" scripts/device.sh 50 3000
scripts/memcheck.sh --all
step "Fuzzing" fuzz
echo "soaked for $((SECONDS / 60)) minutes without a finding"
