#!/bin/sh
# list-exports.sh LIBRARY
#
# Lists the symbols that the library exports, demangled and sorted. A constructor or destructor stands there once for
# each of its entries.
. "$(dirname "$0")/findings.sh"
$NM -D --defined-only --demangle "$1" | sed 's/^[0-9a-f]* . //' | sort
