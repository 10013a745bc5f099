# shellcheck shell=sh
# Sourced by the checks of a built library: a check calls `flaw` for every flaw that it finds and ends with `conclude`.
# READELF and NM name the tools for the library's machine.
set -eu
LC_ALL=C
export LC_ALL
: "${READELF:=readelf}" "${NM:=nm}"
flaws=0

flaw()
{
    flaws=$((flaws + 1))
    printf 'flaw: %s\n' "$*"
}

# Prints the result of the check; the argument names what was checked.
conclude()
{
    if [ "$flaws" -ne 0 ]; then
        printf '%s: %d flaw(s)\n' "$1" "$flaws"
        exit 1
    fi
    printf '%s: no flaw\n' "$1"
}
