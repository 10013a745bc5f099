#!/bin/bash
# Writes the result of a run, the date and the commit into a table of a page. Does nothing unless the environment sets
# TKOSQLLITE_FIGURES. Scripts call it after they have measured something.
#
#   scripts/record.sh PAGE KEY CELL...     replaces the last cells of the row that begins with KEY

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

[ $# -ge 3 ] || fail "it takes a page, a key and cells (--help explains)"
[ -n "${TKOSQLLITE_FIGURES:-}" ] || exit 0
page=$1
key="| $2 |"
shift 2
run="$(date -u +%F), $(git describe --always)"
git diff --quiet HEAD -- ':!docs' ':!*.md' || run+=-dirty
cells=$(printf ' %s |' "$@" | sed ':again; s/\B[0-9]\{3\}\>/,&/; t again') # 1,000,000
exec 9<"$page"
flock 9 # scripts/soak.sh runs several fuzzers at the same time
text=$(KEY=$key CELLS="$cells $run |" REPLACED=$(($# + 1)) awk '
    index($0, ENVIRON["KEY"]) == 1 {
        for (i = 0; i < ENVIRON["REPLACED"]; ++i) { sub(/ [^|]*\|$/, "") }
        $0 = $0 ENVIRON["CELLS"]
        found = 1
    }
    { print }
    END { exit !found }' "$page") || fail "$page has no row that begins with \"$key\""
printf '%s\n' "$text" >"$page"
