#!/bin/sh
# list-exports.sh LIBRARY
#
# Lists the symbols that the library exports, demangled and sorted. A constructor or destructor is listed once for each
# of its entry points.
. "$(dirname "$0")/findings.sh"
$NM -D --defined-only --demangle "$1" | sed 's/^[0-9a-f]* . //' | sort
