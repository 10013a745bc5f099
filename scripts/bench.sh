#!/bin/sh
# Builds the benchmarks, runs them, prints the table of ratios and writes docs/performance.md with its plots.
#
# usage: scripts/bench.sh [ROUNDS]      (25 rounds unless told)
set -eu

cd "$(dirname "$0")/.."
rounds=${1:-25}

install_what_lacks() {
    lacking=
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || lacking="$lacking $package"
    done
    [ -z "$lacking" ] && return
    echo "Installing:$lacking"
    as_root=
    [ "$(id -u)" -eq 0 ] || as_root=sudo
    $as_root apt-get update -qq
    # shellcheck disable=SC2086 # a list of words
    $as_root apt-get install -y -qq $lacking
}

install_what_lacks g++ cmake ninja-build libsqlite3-dev libboost-filesystem-dev \
    libbenchmark-dev libsqlitecpp-dev libsoci-dev libpoco-dev gnuplot-nox python3

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
