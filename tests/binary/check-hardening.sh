#!/bin/sh
# check-hardening.sh LIBRARY
#
# Checks that nothing writes to the library's code and constants: no relocation of code, no executable stack, no segment
# that is both writable and executable, and address tables that are bound at load time and then made read-only.
. "$(dirname "$0")/findings.sh"
library=$1

dynamic=$($READELF -dW "$library")
segments=$($READELF -lW "$library")

echo "$dynamic" | grep -Eq '\(TEXTREL\)|\(FLAGS\).*TEXTREL' && flaw "it has relocations in its code (TEXTREL)"
echo "$dynamic" | grep -Eq '\(BIND_NOW\)|\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW' || flaw "it binds lazily (no BIND_NOW)"
echo "$segments" | grep -q '^ *GNU_RELRO ' || flaw "its address tables stay writable (no GNU_RELRO)"

stack=$(echo "$segments" | sed -n 's/^ *GNU_STACK *\(0x[0-9a-f]* *\)\{5\}//p')
case $stack in
'RW '*) ;;
'') flaw "it does not say that its stack is not executed (no GNU_STACK)" ;;
*) flaw "its stack can be executed (GNU_STACK $stack)" ;;
esac

loaded=$(echo "$segments" | grep -E '^ *LOAD .* RWE ' || true)
[ -z "$loaded" ] || flaw "a segment is writable and executable: $loaded"

conclude "$library"
