# shellcheck shell=bash
# Sourced by the scripts beside it: goes to the project's directory, prints the comment at the top of the script for --help,
# and stops at the first failure and says which it was. Scripts source it by its real place, so that a symbolic link to
# a script works, and with `.` and $0, so that "sh SCRIPT" works.

# shellcheck disable=SC2128,SC3028 # the only line that another shell runs
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

# Ends the script with one line.
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

# step TITLE COMMAND...: runs a command under a title. If it fails, the last line says which step it was and why.
step()
{
    local title=$1 status=0
    shift
    local command="${*#quietly}"
    echo "== $title"
    "$@" || status=$?
    [ "$status" -eq 0 ] || fail "failed: $title (\"${command# }\" ended with status $status)"
}

# Where `step` is too loud: keeps what a command writes to itself and shows it only if the command fails.
quietly()
{
    local status=0 log
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || cat "$log" >&2
    rm -f "$log"
    return "$status"
}
