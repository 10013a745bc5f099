#!/bin/bash
# Makes the Debian packages libtkosqllite and libtkosqllite-dev: for this machine in build/packages, and for the target,
# 32-bit ARM, in build/packages/armhf.
#
#   scripts/packages.sh [native|armhf]...      (both by default)
#
# The same sources give the same packages, byte for byte: their time stamps are SOURCE_DATE_EPOCH or the time of the
# last commit.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept native armhf -- "$@"
machines=("$@")
[ $# -gt 0 ] || machines=(native armhf)
[ -n "${SOURCE_DATE_EPOCH:-}" ] || SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null) || SOURCE_DATE_EPOCH=1767225600
export SOURCE_DATE_EPOCH
umask 022

# cpack accepts a path with non-ASCII characters only in a locale that has these characters.
export LC_ALL=C.UTF-8

# package PRESET FOLDER
package()
{
    step "Configuring ($1)" quietly cmake --preset "$1"
    step "Building ($1)" quietly cmake --build --preset "$1"
    rm -rf "build/$1/packages"
    step "Packing ($1)" quietly cpack --config "build/$1/CPackConfig.cmake"
    mkdir -p "$2"
    rm -f "$2"/*.deb
    cp "build/$1"/packages/*.deb "$2"
    made+=("$2"/*.deb)
}

made=()
for machine in "${machines[@]}"; do
    case $machine in
    native)
        scripts/install-dependencies.sh package
        package package build/packages
        ;;
    armhf)
        scripts/install-dependencies.sh package-armhf
        step "Fetching the target's libraries" quietly scripts/sysroot.sh armhf
        package package-armhf build/packages/armhf
        ;;
    esac
done
echo "== Made ${made[*]}"
