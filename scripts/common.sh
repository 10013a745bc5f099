# shellcheck shell=bash
# Sourced by the scripts beside it: goes to the project's directory, stops at the first failure and says which it was.

set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$project"

# Ends the script with one line.
fail()
{
    echo "$(basename "$0"): $*" >&2
    exit 1
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
