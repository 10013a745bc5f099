#!/bin/sh
# footprint.sh LIBRARY
#
# Prints what the library takes, a figure a line. STRIP names the tool of the library's machine.
set -eu
: "${READELF:=readelf}" "${NM:=nm}" "${STRIP:=strip}"
library=$1

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$STRIP" -o "$stripped" "$library"

# Every page of the writable segment is written to while the library is loaded, and private to its process from then on.
segment=$("$READELF" -lW "$stripped" | awk '$1 == "LOAD" && $7 == "RW" { print $3, $6 }')
first=$((${segment% *} / 4096))
last=$(((${segment% *} + ${segment#* } - 1) / 4096))

echo "file $(wc -c <"$stripped")"
echo "symbols $("$NM" -D --defined-only "$stripped" | wc -l)"
echo "dynamic-symbols $("$NM" -D "$stripped" | wc -l)"
echo "relocations $("$READELF" -rW "$stripped" | grep -c '^[0-9a-f]\{8,\} ')"
echo "private-dirty-pages $((last - first + 1))"
