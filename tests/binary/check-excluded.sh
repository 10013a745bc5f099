#!/bin/sh
# check-excluded.sh LIST COUNT BUILD-FOLDER
#
# Checks that LIST leaves out COUNT tests, all of which exist, each with a reason.
. "$(dirname "$0")/findings.sh"
list=$1
count=$2

tests=$(ctest --test-dir "$3" -N | sed -n 's/^ *Test *#[0-9]*: \([^ ]*\).*/\1/p')
[ -n "$tests" ] || flaw "there are no tests"
excluded=$(grep -v '^#' "$list" || true)
found=$(echo "$excluded" | grep -c . || true)
[ "$found" -eq "$count" ] || flaw "it leaves out $found tests, not $count"

# The loop runs in a subshell, so its findings are printed and counted here.
findings=$(echo "$excluded" | grep . | while read -r name reason; do
    [ -n "$reason" ] || echo "$name is left out without a reason"
    echo "$tests" | grep -Fqx "$name" || echo "$name does not exist"
done)
[ -z "$findings" ] || flaw "$findings"

conclude "$list"
