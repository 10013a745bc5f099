#!/bin/bash
# Builds the benchmarks, runs them, prints the table of ratios and writes docs/performance.md with its plots.
#
#   scripts/bench.sh [ROUNDS]      (25 rounds unless told)

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

rounds=${1:-25}
[[ $# -le 1 && $rounds =~ ^[1-9][0-9]*$ ]] || fail "it takes a number of rounds (--help explains)"
scripts/install-dependencies.sh bench

cmake --preset bench
cmake --build --preset bench

# Files in memory, where the system has that: the disk's moods would drown what is measured.
if [ -w /dev/shm ]; then
    export TMPDIR=/dev/shm
fi

programs=build/bench/bench
"$programs/tkosqllite_bench_memory" --benchmark_out="$programs/memory.json" --benchmark_out_format=json >/dev/null
"$programs/tkosqllite_bench" --benchmark_repetitions="$rounds" --benchmark_enable_random_interleaving=true \
    --benchmark_out="$programs/times.json" --benchmark_out_format=json >/dev/null

python3 bench/report.py "$programs/times.json" "$programs/memory.json" docs
