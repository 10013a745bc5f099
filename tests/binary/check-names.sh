#!/bin/sh
# check-names.sh LIBRARY
#
# Checks that the library's soname is libtkosqllite.so, without a version and without versioned links to it, and that
# its libraries are searched for only in the system's directories.
. "$(dirname "$0")/findings.sh"
library=$1

dynamic=$($READELF -dW "$library")
name=$(echo "$dynamic" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$name" = libtkosqllite.so ] || flaw "the shared-object name is '$name'"
[ "$(basename "$library")" = libtkosqllite.so ] || flaw "the file is named $(basename "$library")"
[ ! -L "$library" ] || flaw "the file is a link to $(readlink "$library")"
for other in "$library".*; do
    [ ! -e "$other" ] || flaw "there is a versioned $other"
done

path=$(echo "$dynamic" | grep -E '\((RPATH|RUNPATH)\)' || true)
[ -z "$path" ] || flaw "it has a run path: $path"

conclude "$library"
