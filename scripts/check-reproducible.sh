#!/bin/bash
# Checks that the same sources give the same library and the same packages, byte for byte, for any build folder, build
# time and user settings.
#
#   scripts/check-reproducible.sh [native|armhf]...      (native by default)

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept native armhf -- "$@"
machines=("$@")
[ $# -gt 0 ] || machines=(native)
scripts/install-dependencies.sh install
[ -n "${SOURCE_DATE_EPOCH:-}" ] || SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH

# Compiles without a compiler cache.
export CCACHE_DISABLE=1

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
first=$work/first
second="$work/a/longer/name/for the second"
for copy in "$first" "$second"; do
    mkdir -p "$copy/build"
    cp -a .ci .gitignore CHANGELOG.md CMakeLists.txt CMakePresets.json cmake include scripts src "$copy"
    [ ! -d build/armhf-sysroot ] || ln -s "$project/build/armhf-sysroot" "$copy/build/"
done
# The modification times of the files differ too.
find "$second" -type f -exec touch -d '2001-02-03 04:05:06' {} +

build_second()
{
    cd "$second" && umask 077 && TZ=Asia/Kolkata LC_ALL=C.UTF-8 USER=somebody-else scripts/packages.sh "${machines[@]}"
}
step "Building in one folder" quietly "$first/scripts/packages.sh" "${machines[@]}"
sleep 2
step "Building in another folder" quietly build_second

compare()
{
    local file compared=0
    cd "$first"
    while read -r file; do
        cmp "$first/$file" "$second/$file" || return
        sha256sum "$file"
        compared=$((compared + 1))
    done < <(find build/*/src/libtkosqllite.so build/packages -type f | LC_ALL=C sort)
    # One library and two packages for each machine.
    [ "$compared" -eq $((3 * ${#machines[@]})) ]
}
step "Comparing" compare
