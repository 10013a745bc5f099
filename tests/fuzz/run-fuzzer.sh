#!/bin/bash
# Searches for inputs of a fuzz target that lead to a finding. Build the targets first: "cmake --build --preset fuzz".
#
#   tests/fuzz/run-fuzzer.sh TARGET [SECONDS [DIRECTORY]]
#
# TARGET is one of value-literals, schema-text, operations, database-files. SECONDS is 20 unless the environment sets
# TKOSQLLITE_FUZZ_SECONDS. The search begins with the target's corpus and with the files in DIRECTORY, where new inputs
# are kept for the next run; without DIRECTORY new inputs are discarded. An input with a finding is kept in
# build/fuzz/findings. With SECONDS and TKOSQLLITE_FIGURES in the environment, the number of inputs is written into
# docs/reliability.md.

set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=${TKOSQLLITE_FUZZ_BUILD:-$(cd "$here/../.." && pwd)/build/fuzz}
target=${1:?"usage: run-fuzzer.sh TARGET [SECONDS [DIRECTORY]]"}
seconds=${2:-${TKOSQLLITE_FUZZ_SECONDS:-20}}

fail()
{
    echo "run-fuzzer.sh: $target: $*" >&2
    exit 1
}

# A run counts only if it tries at least this number of inputs per second and reaches this much of the code. Both
# numbers are lower than the results on a machine that is busy with a dozen other programs.
case $target in
value-literals) rate=20 coverage=800 length=4096 ;;
schema-text) rate=10 coverage=1000 length=2048 ;;
operations) rate=3 coverage=1700 length=2048 ;;
database-files) rate=2 coverage=1300 length=16384 ;;
*) fail "no such target" ;;
esac

# The files that a target uses are in memory if the system has such a directory.
scratch=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")" tkosqllite-fuzz-XXXXXX)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/files" "$scratch/corpus"
kept=${3:-$scratch/corpus}
mkdir -p "$kept" "$build/findings"

program=$build/tests/fuzz/$target
status=0
TMPDIR=$scratch/files ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=10:${ASAN_OPTIONS:-} "$program" \
    -max_total_time="$seconds" -max_len=$length -timeout=30 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$build/findings/$target-" "$kept" "$here/corpus/$target" >"$scratch/log" 2>&1 || status=$?

if [ "$status" -ne 0 ]; then
    grep -av '^#[0-9]*[[:space:]]' "$scratch/log" || true
    input=$(sed -n 's/^.*Test unit written to //p' "$scratch/log")
    fail "ended with status $status${input:+; to repeat it: $program $input}"
fi
executed=$(sed -n 's/^stat::number_of_executed_units: *//p' "$scratch/log")
reached=$(sed -n 's/^.*DONE *cov: \([0-9]*\) .*/\1/p' "$scratch/log")
echo "$target: $executed inputs in $seconds seconds, coverage $reached"
[ "${executed:-0}" -ge $((rate * seconds)) ] || fail "that is too few inputs: it does not try what it should"
[ "${reached:-0}" -ge $coverage ] || fail "that is too little coverage: it does not try what it should"
[ $# -lt 2 ] || "$here/../../scripts/record.sh" docs/reliability.md "\`$target\`" "$executed in $seconds s"
