#!/bin/bash
# Prints the size of the release library for this machine and for the target: the stripped file, symbols, relocations,
# pages written to at load, and the sections. The budgets are in tests/budgets/footprint.txt.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"
scripts/install-dependencies.sh test-all
step "Fetching the target's libraries" quietly scripts/sysroot.sh armhf
for preset in native armhf; do
    step "Building ($preset)" quietly cmake --preset "$preset"
    quietly cmake --build --preset "$preset" --target tkosqllite
    prefix=
    [ "$preset" = native ] || prefix=arm-linux-gnueabihf-
    library=build/$preset/src/libtkosqllite.so
    READELF=${prefix}readelf NM=${prefix}nm STRIP=${prefix}strip tests/binary/check.sh measure "$library"
    "${prefix}size" -A "$library" | grep -v '\.debug'
done
