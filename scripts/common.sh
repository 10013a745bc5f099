# shellcheck shell=bash
# Sourced by the other scripts: changes to the project's directory, prints the comment at the top of the script for
# --help, and at the first failure stops and says which step failed. Scripts source this file by its real path, so that
# a symbolic link to a script works, and with `.` and $0, so that "sh SCRIPT" works.

# shellcheck disable=SC2128,SC3028 # the only line that a shell other than bash runs
[ -n "${BASH_VERSION:-}" ] || exec bash "$0" "$@"

set -euo pipefail

for argument in "$@"; do
    case $argument in
    -h | --help)
        awk 'NR > 1 { if (!/^#/) exit; sub(/^# ?/, ""); print }' "$0"
        exit 0
        ;;
    esac
done

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$project"

# Prints one line and ends the script with a failure.
fail()
{
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# accept WORD... -- ARGUMENT...: ends the script if an argument is not one of the words.
accept()
{
    local words=() argument
    while [ "$1" != -- ]; do
        words+=("$1")
        shift
    done
    shift
    for argument in "$@"; do
        [[ " ${words[*]} " == *" $argument "* ]] ||
            fail "unknown argument \"$argument\"; $(basename "$0") takes ${words[*]:-none} (--help explains)"
    done
}

# Prints a number of seconds as "2 min 23 s".
duration()
{
    if [ "$1" -ge 60 ]; then echo "$(($1 / 60)) min $(($1 % 60)) s"; else echo "$1 s"; fi
}

# step TITLE COMMAND...: prints the title and runs the command. If it fails, the last line says which step failed and
# why.
step()
{
    local title=$1 status=0
    shift
    local command="${*#quietly}"
    echo "== $title"
    "$@" || status=$?
    [ "$status" -eq 0 ] || fail "failed: $title (\"${command# }\" ended with status $status)"
}

# Used with `step` for commands with much output: shows the output only if the command fails.
quietly()
{
    local status=0 log
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || cat "$log" >&2
    rm -f "$log"
    return "$status"
}
