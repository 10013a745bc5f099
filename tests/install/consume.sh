#!/bin/bash
# Builds two programs against an installed library and runs them.
#
#   consume.sh cmake      FOLDER FIRST-STEPS [ARGUMENT...]              arguments of cmake
#   consume.sh pkg-config FOLDER FIRST-STEPS COMPILER [OPTION...]       options of the compiler
#
# Creates FOLDER and builds in it; FIRST-STEPS is the source of the example of that name. Environment variables:
# CMAKE_PREFIX_PATH and PKG_CONFIG_PATH tell where the library is, RUN is the emulator that runs a program, if one is
# needed, and PKG_CONFIG is the command for pkg-config (default: pkg-config).
set -euo pipefail

how=$1
work=$(realpath -m -- "$2")
first_steps=$(realpath -- "$3")
shift 3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
read -r -a run <<<"${RUN:-}"
read -r -a pkg_config <<<"${PKG_CONFIG:-pkg-config}"
rm -rf "$work"
mkdir -p "$work"

prints()
{
    local expected=$1 program=$2 printed
    printed=$(cd "$work" && "${run[@]}" "./$program") || { echo "$program ended with status $?"; return 1; }
    [ "$printed" = "$expected" ] || { echo "$program printed \"$printed\", not \"$expected\""; return 1; }
}

case $how in
cmake)
    cmake -S "$here" -B "$work" -DFIRST_STEPS="$first_steps" "$@"
    cmake --build "$work"
    cmake --install "$work" --prefix "$work/installed"
    programs=installed/bin
    ;;
pkg-config)
    declare -a flags libraries
    eval "flags=($("${pkg_config[@]}" --cflags tkosqllite))" # pkg-config escapes blanks
    eval "libraries=($("${pkg_config[@]}" --libs tkosqllite))"
    eval "includes=$("${pkg_config[@]}" --variable=includedir tkosqllite)"
    options=("$@" -Wall -Wextra -Wpedantic -Werror "${flags[@]}")

    # Includes all headers in a program that uses none of them.
    (cd "${includes:?}/tkosqllite" && printf '#include <%s>\n' sql/*.h) >"$work/headers.cpp"
    "${options[@]}" -fsyntax-only "$work/headers.cpp"
    "${options[@]}" -o "$work/first_steps" "$first_steps" "${libraries[@]}"
    "${options[@]}" -o "$work/prepared" "$here/prepared.cpp" "${libraries[@]}"
    programs=.
    ;;
*)
    echo "\"$how\" is neither cmake nor pkg-config" >&2
    exit 2
    ;;
esac

prints 'kitchen 21.5' "$programs/first_steps"
prints $'one 9000000000\nseven 15000000000\nfifteen 21000000000' "$programs/prepared"
