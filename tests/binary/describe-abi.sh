#!/bin/sh
# describe-abi.sh LIBRARY FILE COMPILER
#
# Writes a description of everything that the library's exported functions reach: their parameters, the layout of the
# classes and the order of the virtual tables. The library needs its debug information. The last line of the file names
# the compiler, because descriptions from different compilers cannot be compared.
set -eu
command -v abidw >/dev/null || { echo "abidw is needed and not installed (package abigail-tools)" && exit 1; }
abidw --suppressions "$(dirname "$0")/abi-suppressions.ini" --exported-interfaces-only --drop-undefined-syms \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed --type-id-style hash \
    --out-file "$2" "$1"
echo "<!-- recorded with $3 -->" >>"$2"
