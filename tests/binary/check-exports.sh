#!/bin/sh
# check-exports.sh LIBRARY LIST
#
# Checks that the library exports exactly the names in LIST, and that all of them belong to Morvik::sql.
. "$(dirname "$0")/findings.sh"
library=$1
list=$2

$NM -D --defined-only "$library" | grep -Ev ' _Z(NK?|T[VIS]N)6Morvik3sql' | while read -r _ _ stray; do
    echo "it exports $stray, which is not of Morvik::sql"
done | {
    while read -r finding; do
        flaw "$finding"
    done

    exports=$("$(dirname "$0")/list-exports.sh" "$library")
    differences=$(echo "$exports" | diff "$list" - || true)
    echo "$differences" | sed -n 's/^< /missing: /p; s/^> /new: /p'
    [ -z "$differences" ] || flaw "what it exports differs from $list (if it may: scripts/update-baseline.sh exports)"

    conclude "$library"
}
