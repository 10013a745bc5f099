#!/bin/bash
# Builds the library and shows it at work: an inventory of this machine's packages, and a log of its load and memory.
#
#   scripts/demo.sh [STATUS-FILE]
#
# STATUS-FILE is a dpkg status file to take the inventory from instead of this machine's own. The databases stay in
# build/demo; a second run shows what has changed since the first.

[ $# -le 1 ] || { echo "demo.sh: one status file at most" >&2; exit 2; }
status_file=$(realpath -m -- "${1:-/var/lib/dpkg/status}") || exit 2

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

scripts/install-dependencies.sh build
step "Configuring" quietly cmake --preset release
step "Building the library and the examples" quietly cmake --build --preset release
examples=build/release/examples
step "Taking an inventory of the packages" \
    "$examples/package_inventory" --database "$project/build/demo/inventory.db" "$status_file"
step "Logging this machine for five seconds" \
    "$examples/device_log" --database "$project/build/demo/device_log.db" --samples 6 --interval 1
