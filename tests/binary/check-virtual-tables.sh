#!/bin/sh
# check-virtual-tables.sh LIBRARY
#
# Checks the number of entries of each virtual table: two words of description, two destructors and, in the facade, its
# 13 operations. A statement's private state has its destructors only. Needs an unstripped library.
. "$(dirname "$0")/findings.sh"
library=$1

class=$($READELF -hW "$library" | sed -n 's/^ *Class: *ELF//p')
symbols=$($NM -S --defined-only "$library" 2>/dev/null)
check_table()
{
    size=$(echo "$symbols" | sed -n "s/^[0-9a-f]* \([0-9a-f]*\) . $1$/\1/p")
    [ -n "$size" ] || { flaw "there is no symbol $1" && return; }
    entries=$((0x$size * 8 / class))
    [ "$entries" -eq "$2" ] || flaw "$1 has $entries entries, not $2"
}

check_table _ZTVN6Morvik3sql12IDatabaseApiE 17
check_table _ZTVN6Morvik3sql11DatabaseApiE 17
check_table _ZTVN6Morvik3sql10SqlCommand4ImplE 4

conclude "$library"
