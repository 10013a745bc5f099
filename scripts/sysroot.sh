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
sysroot=$(realpath -m -- "${folder:-$project/build/$architecture-sysroot}")
boost=1.74
packages="libsqlite3-0 libsqlite3-dev
    libboost-filesystem${boost}.0 libboost-filesystem${boost}-dev libboost-system${boost}.0 libboost-system${boost}-dev
    libgtest-dev libgmock-dev"
# The packages that the library needs at run time. They are also unpacked into the separate folder "runtime", with the
# files that dpkg-shlibdeps reads.
runtime="libc6 libgcc-s1 libstdc++6 libsqlite3-0 libboost-filesystem${boost}.0"

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
contents="bookworm $architecture $packages runtime: $runtime"
if [ "$(cat "$sysroot/.made-from" 2>/dev/null)" = "$contents" ] && [ -z "$(missing "$sysroot")" ]; then
    echo "$sysroot is complete"
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

mkdir -p "$(dirname "$sysroot")"
work=$(mktemp -d "$sysroot.XXXXXX")
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

fetch()
{
    # shellcheck disable=SC2086 # a list of names
    scripts/debian-apt.sh "$architecture" "$work" && mkdir "$work/packages" && cd "$work/packages" &&
        APT_CONFIG=$work/apt.conf apt-get download $packages $runtime
}
unpack()
{
    local package file
    for package in $packages; do
        dpkg-deb -x "$work/packages/${package}"_*.deb "$work/sysroot" || return
    done
    mkdir -p "$work/sysroot/runtime/DEBIAN"
    for package in $runtime; do
        dpkg-deb -x "$work/packages/${package}"_*.deb "$work/sysroot/runtime" &&
            dpkg-deb -e "$work/packages/${package}"_*.deb "$work/control/$package" || return
        for file in symbols shlibs; do
            [ ! -e "$work/control/$package/$file" ] ||
                cat "$work/control/$package/$file" >>"$work/sysroot/runtime/DEBIAN/$file"
        done
    done
    ln -s "$headers" "$work/sysroot/usr/include/boost"
}
step "Fetching Debian packages for $architecture" quietly fetch
mkdir "$work/sysroot" "$work/control"
step "Unpacking them into $sysroot" quietly unpack
[ -z "$(missing "$work/sysroot")" ] || fail "the packages held no $(missing "$work/sysroot")"
echo "$contents" >"$work/sysroot/.made-from"
rm -rf "$sysroot"
mv "$work/sysroot" "$sysroot"
