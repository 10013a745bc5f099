#!/bin/sh
# Renews the descriptions of the binary interface, tests/binary/abi-*.xml, from the library as it ships on both
# machines. When that is allowed: docs/binary-interface.md.
set -eu
cd "$(dirname "$0")/.."
scripts/armhf-sysroot.sh
for preset in native armhf; do
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target renew-abi-baseline
done
git --no-pager diff --stat -- tests/binary/abi-*.xml
