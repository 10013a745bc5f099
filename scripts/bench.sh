#!/bin/bash
# Builds the benchmarks, measures times, counts memory and instructions on this machine and on the emulated target,
# prints the table of ratios and writes docs/performance.md with its pictures.
#
#   scripts/bench.sh [ROUNDS]      (25 rounds by default)
#
# With ROUNDS 0 the times of the last run are kept, and only memory and instructions are counted again.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

rounds=${1:-25}
[[ $# -le 1 && $rounds =~ ^(0|[1-9][0-9]*)$ ]] || fail "it takes a number of rounds (--help explains)"
scripts/install-dependencies.sh bench
scripts/sysroot.sh armhf

# The files are in memory if /dev/shm exists, so that disk noise does not dominate the measurement.
if [ -w /dev/shm ]; then
    export TMPDIR=/dev/shm
fi

results=build/performance
mkdir -p "$results"
for preset in bench budgets armhf; do
    cmake --preset "$preset"
done
cmake --build --preset bench
cmake --build --preset bench --target tkosqllite_count_memory
cmake --build --preset budgets --target tkosqllite_count_instructions
cmake --build --preset armhf --target tkosqllite_count_instructions tkosqllite_count_memory
cp build/bench/bench/memory.json "$results/memory-x86_64.json"
cp build/armhf/bench/memory.json "$results/memory-armhf.json"
cp build/budgets/tests/budgets/counts.json "$results/counts-x86_64.json"
cp build/armhf/tests/budgets/counts.json "$results/counts-armhf.json"
if [ "$rounds" -gt 0 ]; then
    python3 bench/machine.py >"$results/machine.json"
    build/bench/bench/tkosqllite_bench "$results/times.json" "$rounds"
fi
python3 bench/report.py "$results" docs
