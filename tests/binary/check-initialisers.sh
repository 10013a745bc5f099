#!/bin/sh
# check-initialisers.sh LIBRARY
#
# Checks that no code of the library runs when it is loaded or unloaded: the arrays of initialisers and finalisers hold
# only the one entry each that the compiler's start files put there. Needs an unstripped library.
. "$(dirname "$0")/findings.sh"
library=$1

symbols=$($NM "$library" 2>/dev/null)
[ -n "$symbols" ] || flaw "it has no symbols to look at"
# Reads a header's Type and Size and a symbol's address: the entry of the start files must be the only one.
check_array()
{
    $READELF -SW "$library" | sed -n "s/^ *\[ *[0-9]*\] \\$1 *[A-Z_]* *\([0-9a-f]*\) [0-9a-f]* \([0-9a-f]*\) .*/\1 \2/p" |
        while read -r address size; do
            pointer=$((${#address} / 2))
            [ "$((0x$size))" -eq "$pointer" ] || echo "$1 holds $((0x$size / pointer)) entries"
            echo "$symbols" | grep -q "^$address . $2$" || echo "$1 does not begin with $2"
        done
    $READELF -SW "$library" | grep -q " \\$1 " || echo "$1 is missing"
}

for finding in "$(check_array .init_array __frame_dummy_init_array_entry)" \
    "$(check_array .fini_array __do_global_dtors_aux_fini_array_entry)" \
    "$(echo "$symbols" | grep -E ' (_GLOBAL__(sub_)?[ID]_|_Z41__static_initialization_and_destruction_0)' || true)"; do
    [ -z "$finding" ] || flaw "$finding"
done

conclude "$library"
