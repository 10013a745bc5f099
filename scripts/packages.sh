#!/bin/bash
# Makes the Debian packages libtkosqllite and libtkosqllite-dev: for this machine in build/packages, and for the target,
# 32-bit ARM, in build/packages/armhf. "doc" makes libtkosqllite-doc, the guide and the reference, in build/packages.
#
#   scripts/packages.sh [native|armhf|doc]...      (all by default)
#
# The same sources give the same packages, byte for byte: their time stamps are SOURCE_DATE_EPOCH or the time of the
# last commit.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept native armhf doc -- "$@"
kinds=("$@")
[ $# -gt 0 ] || kinds=(native armhf doc)
[ -n "${SOURCE_DATE_EPOCH:-}" ] || SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null) || SOURCE_DATE_EPOCH=1767225600
export SOURCE_DATE_EPOCH
umask 022

# cpack accepts a path with non-ASCII characters only in a locale that has these characters.
export LC_ALL=C.UTF-8

# package PRESET FOLDER COMPONENTS
package()
{
    step "Configuring ($1)" quietly cmake --preset "$1"
    step "Building ($1)" quietly cmake --build --preset "$1"
    rm -rf "build/$1/packages"
    step "Packing ($1)" quietly cpack --config "build/$1/CPackConfig.cmake" -D "CPACK_COMPONENTS_ALL=$3"
    local file name
    mkdir -p "$2"
    for file in "build/$1"/packages/*.deb; do
        name=$(basename "$file")
        rm -f "$2/${name%%_*}"_*.deb
        cp "$file" "$2"
        made+=("$2/$name")
    done
}

made=()
for kind in "${kinds[@]}"; do
    case $kind in
    native)
        scripts/install-dependencies.sh package
        package package build/packages 'library;development'
        ;;
    armhf)
        scripts/install-dependencies.sh package-armhf
        step "Fetching the target's libraries" quietly scripts/sysroot.sh armhf
        package package-armhf build/packages/armhf 'library;development'
        ;;
    doc)
        scripts/install-dependencies.sh package
        scripts/reference.sh
        package package build/packages documentation
        ;;
    esac
done
echo "== Made ${made[*]}"
