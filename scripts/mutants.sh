#!/bin/bash
# Changes the library one operator, constant, condition or call at a time and tells which changes no test notices. A
# change that nothing can notice is answered in tests/mutants/answered.txt.
#
#   scripts/mutants.sh                      tries every change, in about an hour on two processors
#   scripts/mutants.sh --sample N [--seed S]
#                                           tries N of them, chosen at random or as by the seed of an earlier run
#   scripts/mutants.sh --only PATH...       tries those of the files whose path holds one of these
#   scripts/mutants.sh --continue           tries those that earlier runs have not come to
#   scripts/mutants.sh --again              tries those that survived before
#   scripts/mutants.sh --list               prints them

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

# Debian's Python has Debian's clang package.
step "Trying mutants" /usr/bin/python3 -B tests/mutants/mutants.py build/native --workers "$(nproc)" "$@"
