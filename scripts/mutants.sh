#!/bin/bash
# Changes the library one operator, constant, condition or call at a time and reports the changes that no test notices.
# A change that no test can notice is listed with the reason in tests/mutants/suppressions.txt.
#
#   scripts/mutants.sh                      tries every change, in about an hour on two processors
#   scripts/mutants.sh --sample N [--seed S]
#                                           tries N random changes; the same seed gives the same changes
#   scripts/mutants.sh --only PATH...       tries the changes in files whose path contains one of these
#   scripts/mutants.sh --continue           tries the changes that earlier runs did not reach
#   scripts/mutants.sh --again              tries the changes that survived before
#   scripts/mutants.sh --list               prints the changes

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

for argument in "$@"; do
    case $argument in
    --sample | --seed | --only | --continue | --again | --list) ;;
    -*) fail "unknown argument \"$argument\" (--help explains)" ;;
    esac
done
scripts/install-dependencies.sh all
step "Configuring (native)" quietly cmake --preset native
step "Building (native)" quietly cmake --build --preset native \
    --target tkosqllite_tests tkosqllite_internals_tests tkosqllite_memory_fault_tests

# Debian's clang package for Python is installed for Debian's Python only.
mutants=(/usr/bin/python3 -B tests/mutants/mutants.py build/native)
step "Trying mutants" "${mutants[@]}" --workers "$(nproc)" "$@" | tee build/mutants.log

# Writes the figure only after a run of all changes.
[ -n "${TKOSQLLITE_FIGURES:-}" ] || exit 0
all=$("${mutants[@]}" --list | tail -n 1)
summary=$(grep "^$all: " build/mutants.log) || exit 0
scripts/record.sh docs/reliability.md mutation "$summary"
