#!/bin/bash
# Builds two programs against an installed library and runs them.
#
#   consume.sh cmake      FOLDER FIRST-STEPS [ARGUMENT...]              arguments of cmake
#   consume.sh pkg-config FOLDER FIRST-STEPS COMPILER [OPTION...]       options of the compiler
#
# FOLDER is made, and holds what is built; FIRST-STEPS is the source of the example of that name. The environment says
# where the library is (CMAKE_PREFIX_PATH, PKG_CONFIG_PATH), in RUN what runs a program, where that takes something, and in
# PKG_CONFIG how to call pkg-config, if not by its name alone.
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
    eval "flags=($("${pkg_config[@]}" --cflags tkosqllite))" # it escapes blanks
    eval "libraries=($("${pkg_config[@]}" --libs tkosqllite))"
    eval "includes=$("${pkg_config[@]}" --variable=includedir tkosqllite)"
    options=("$@" -Wall -Wextra -Wpedantic -Werror "${flags[@]}")

    # All headers at once, in a program that uses none of them.
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
