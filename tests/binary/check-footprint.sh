#!/bin/sh
# check-footprint.sh LIBRARY MACHINE BUDGETS
#
# Checks that the library takes no more than its budgets.
. "$(dirname "$0")/findings.sh"
library=$1
machine=$2
budgets=$3

figures=$("$(dirname "$0")/footprint.sh" "$library")
echo "$figures"
for figure in file symbols; do
    measured=$(echo "$figures" | sed -n "s/^$figure //p")
    allowed=$(awk -v machine="$machine" -v figure="$figure" '
        $1 == "machine" { for (i = 2; i <= NF; ++i) if ($i == figure) column = i }
        $1 == machine { print $column }' "$budgets")
    case $measured.$allowed in
    *[!0-9.]* | .* | *.) flaw "no figure or no budget for $figure of $machine" ;;
    *) [ "$measured" -le "$allowed" ] || flaw "$figure: $measured, and $allowed are allowed" ;;
    esac
done

conclude "$library"
