#!/bin/sh
# footprint.sh LIBRARY
#
# Prints the sizes of the library, one figure per line. STRIP names the tool for the library's machine.
set -eu
: "${READELF:=readelf}" "${NM:=nm}" "${STRIP:=strip}"
library=$1

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$STRIP" -o "$stripped" "$library"

# Every page of the writable segment is written to while the library is loaded, and is private to its process
# afterwards.
segment=$("$READELF" -lW "$stripped" | awk '$1 == "LOAD" && $7 == "RW" { print $3, $6 }')
first=$((${segment% *} / 4096))
last=$(((${segment% *} + ${segment#* } - 1) / 4096))

echo "file $(wc -c <"$stripped")"
echo "symbols $("$NM" -D --defined-only "$stripped" | wc -l)"
echo "dynamic-symbols $("$NM" -D "$stripped" | wc -l)"
echo "relocations $("$READELF" -rW "$stripped" | grep -c '^[0-9a-f]\{8,\} ')"
echo "private-dirty-pages $((last - first + 1))"
