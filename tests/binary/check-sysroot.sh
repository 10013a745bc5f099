#!/bin/sh
# check-sysroot.sh BUILD-FOLDER SYSROOT LINK-MAP...
#
# Checks that a cross build uses nothing of this machine except its programs: every header that was read and every file
# that was linked belongs to the project, to the sysroot or to the cross compiler. Boost's headers are the exception,
# because the sysroot only links to them.
. "$(dirname "$0")/findings.sh"
build=$(cd "$1" && pwd)
sysroot=$(cd "$2" && pwd)
shift 2
project=$(cd "$(dirname "$0")/../.." && pwd)
compiler='/usr/lib/gcc-cross|/usr/arm-linux-gnueabihf'

# Makes the paths absolute and leaves out the allowed ones. Link-time optimisation links temporary objects.
strays()
{
    (cd "$build" && sort -u | grep -Ev '\.(ltrans|debug\.temp)\.o$' | xargs realpath -ms) |
        grep -Ev "^($build|$project/(include|src|tests|examples|bench)|$sysroot|$compiler)/" || true
}

headers=$(cd "$build" && ninja -t deps | sed -n 's/^    //p' | sort -u | xargs realpath -ms) # ccache makes them relative
linked=$(sed -n 's/^LOAD //p' "$@" | grep -v '^linker stubs$')

echo "$headers" | grep -Eq "^$sysroot/usr/include/sqlite3\.h$" || flaw "sqlite3.h of $sysroot was not read"
for library in libsqlite3 libboost_filesystem; do
    echo "$linked" | grep -Eq "^$sysroot/usr/lib/.*/$library\.so" || flaw "$library of $sysroot was not linked"
done
for header in $(echo "$headers" | strays | grep -v '^/usr/include/boost/'); do
    flaw "this machine's header $header was read"
done
for file in $(echo "$linked" | strays); do
    flaw "this machine's $file was linked"
done

conclude "$build"
