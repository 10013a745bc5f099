#!/bin/sh
# check-needed.sh LIBRARY
#
# Checks that the library needs only SQLite, Boost.Filesystem and the run-time libraries of C++ and C. Other Boost
# libraries are allowed if the installed Boost.Filesystem needs them, and so is the dynamic loader, which holds the
# stack protector's guard on ARM.
. "$(dirname "$0")/findings.sh"
library=$1

needed=$($READELF -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
for required in 'libsqlite3\.so\.0' 'libboost_filesystem\.so\..*' 'libstdc++\.so\.6' 'libc\.so\.6'; do
    echo "$needed" | grep -qx "$required" || flaw "it does not need $required"
done

required='libsqlite3\.so\.0|libboost_filesystem\.so\..*|libstdc\+\+\.so\.6|libc\.so\.6'
companions='libboost_(system|atomic)\.so\..*|libgcc_s\.so\.1|libm\.so\.6|ld-linux-(armhf\.so\.3|x86-64\.so\.2)'
others=$(echo "$needed" | grep -Evx "$required|$companions" || true)
for other in $others; do
    flaw "it needs $other"
done

conclude "$library"
