#!/bin/bash
# consume.sh FOLDER FIRST-STEPS COMPILER [OPTION...]
#
# Builds two programs against an installed library, with pkg-config, and runs them. Creates FOLDER and builds in it;
# FIRST-STEPS is the source of the example of that name. Environment variables: PKG_CONFIG_PATH tells where the library
# is, RUN is the emulator that runs a program, if one is needed, and PKG_CONFIG is the command for pkg-config.
set -euo pipefail

work=$(realpath -m -- "$1")
first_steps=$(realpath -- "$2")
shift 2
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

prints 'kitchen 21.5' first_steps
prints $'one 9000000000\nseven 15000000000\nfifteen 21000000000' prepared
