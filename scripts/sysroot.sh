#!/bin/bash
# Makes the folder of libraries and headers that a preset for another machine builds and tests against.
#
#   scripts/sysroot.sh armhf [FOLDER]      32-bit ARM with hardware floating point, for the preset armhf
#   scripts/sysroot.sh i386 [FOLDER]       32-bit x86, for the preset m32
#
# FOLDER is build/armhf-sysroot or build/i386-sysroot by default. A complete folder stays as it is. Nothing is installed
# on this machine, and root is not needed.
#
# Fetches this project's dependencies for another Debian architecture and unpacks them into FOLDER. The packages cannot
# be installed, because their development files conflict with this machine's own, so they are fetched with the separate
# apt state that debian-apt.sh makes.
#
# TKOSQLLITE_DEBIAN_MIRROR names another mirror of Debian.

folder=${2:+$(realpath -m -- "$2")} || exit 2

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept armhf i386 -- "${@:1:1}"
case $#,${1:-} in
[12],armhf) multiarch=arm-linux-gnueabihf ;;
[12],i386) multiarch=i386-linux-gnu ;;
*) fail "it takes armhf or i386, and a folder if not the usual one (--help explains)" ;;
esac
architecture=$1
sysroot=${folder:-$project/build/$architecture-sysroot}
mirror=${TKOSQLLITE_DEBIAN_MIRROR:-http://deb.debian.org/debian}
release=bookworm
boost=1.74
packages="libsqlite3-0 libsqlite3-dev
    libboost-filesystem${boost}.0 libboost-filesystem${boost}-dev libboost-system${boost}.0 libboost-system${boost}-dev
    libgtest-dev libgmock-dev"
# The packages that the library needs at run time. They are also unpacked into the separate folder "runtime", with the
# files that dpkg-shlibdeps reads.
runtime="libc6 libgcc-s1 libstdc++6 libsqlite3-0 libboost-filesystem${boost}.0"

fail()
{
    echo "$architecture-sysroot: $*" >&2
    exit 1
}

# Ends the script with the first error in the log, or with the last line of the log if there is no error.
fail_with_log()
{
    fail "$1: $(grep '^E: ' "$log" | head -n 1 | grep . || tail -n 1 "$log")"
}

# Prints the first required file that is not in the folder.
missing()
{
    for file in usr/include/sqlite3.h usr/include/boost/version.hpp usr/include/gtest/gtest.h \
        "usr/lib/$multiarch/libsqlite3.so" "usr/lib/$multiarch/libboost_filesystem.so" \
        "usr/lib/$multiarch/libgtest.a" "usr/lib/$multiarch/libgmock.a" \
        "runtime/lib/$multiarch/libc.so.6" runtime/DEBIAN/symbols runtime/DEBIAN/shlibs; do
        [ -e "$1/$file" ] || { echo "$file" && return; }
    done
}

# The release, the architecture and the packages of a complete folder. If they change, the folder is made again.
contents="$release $architecture $packages runtime: $runtime"
if [ "$(cat "$sysroot/.made-from" 2>/dev/null)" = "$contents" ] && [ -z "$(missing "$sysroot")" ]; then
    echo "$architecture-sysroot: $sysroot is complete"
    exit 0
fi
if [ -e "$sysroot" ] && [ ! -e "$sysroot/.made-from" ] && ! rmdir "$sysroot" 2>/dev/null; then
    fail "$sysroot holds something else; name another folder"
fi

for tool in apt-get dpkg-deb; do
    command -v "$tool" >/dev/null || fail "$tool is needed and not installed"
done

# Boost's headers are large and the same for every architecture, so the folder only links to this machine's headers.
headers=/usr/include/boost
grep -q "BOOST_LIB_VERSION \"$(echo "$boost" | tr . _)\"" "$headers/version.hpp" 2>/dev/null ||
    fail "the headers of Boost $boost are needed in $headers and not there (package libboost$boost-dev)"

mkdir -p "$(dirname "$sysroot")" || fail "cannot make the folder $(dirname "$sysroot")"
sysroot=$(cd "$(dirname "$sysroot")" && pwd)/$(basename "$sysroot")
work=$(mktemp -d "$sysroot.XXXXXX") || fail "cannot write beside $sysroot"
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
log=$work/log

mkdir -p "$work/packages" "$work/sysroot"
echo "$architecture-sysroot: fetching $(echo "$packages" | wc -w) packages from $mirror"
"$project/scripts/debian-apt.sh" "$architecture" "$work" >"$log" 2>&1 || fail_with_log "cannot read $mirror"
export APT_CONFIG="$work/apt.conf"
# shellcheck disable=SC2086 # a list of names
(cd "$work/packages" && apt-get download $packages $runtime) >"$log" 2>&1 || fail_with_log "cannot fetch the packages"

unpack()
{
    dpkg-deb "$@" >"$log" 2>&1 || fail_with_log "cannot unpack $(basename "$2")"
}

for package in $packages; do
    unpack -x "$work/packages/${package}"_*.deb "$work/sysroot"
done
mkdir -p "$work/sysroot/runtime/DEBIAN"
for package in $runtime; do
    unpack -x "$work/packages/${package}"_*.deb "$work/sysroot/runtime"
    unpack -e "$work/packages/${package}"_*.deb "$work/control"
    for file in symbols shlibs; do
        [ ! -e "$work/control/$file" ] || cat "$work/control/$file" >>"$work/sysroot/runtime/DEBIAN/$file"
    done
    rm -rf "$work/control"
done
mkdir -p "$work/sysroot/usr/include"
ln -s "$headers" "$work/sysroot/usr/include/boost"

[ -z "$(missing "$work/sysroot")" ] || fail "the packages held no $(missing "$work/sysroot")"
echo "$contents" >"$work/sysroot/.made-from"
rm -rf "$sysroot"
mv "$work/sysroot" "$sysroot" || fail "cannot move the finished folder to $sysroot"
echo "$architecture-sysroot: made $sysroot"
