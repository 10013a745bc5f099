#!/bin/sh
# check-abi.sh LIBRARY DESCRIPTION
#
# Checks that programs built against the library of DESCRIPTION run with LIBRARY: no type, function or virtual table
# that they can reach has changed. The library needs its debug information.
. "$(dirname "$0")/findings.sh"
library=$1
description=$2

$READELF -SW "$library" | grep -q ' \.debug_info ' || flaw "it has no debug information to compare"
command -v abidiff >/dev/null || flaw "abidiff is needed and not installed (package abigail-tools)"
abidiff --suppressions "$(dirname "$0")/abi-suppressions.ini" --exported-interfaces-only --no-show-locs \
    "$description" "$library" ||
    flaw "its types differ from $description (when that may be renewed: docs/binary-interface.md)"

conclude "$library"
