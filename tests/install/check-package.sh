#!/bin/bash
# check-package.sh PACKAGE FOLDER
#
# Unpacks a Debian package of the library into FOLDER and checks its control files.
set -euo pipefail
package=$1
folder=$2
project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
version=$(sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' "$project/CMakeLists.txt")

flaw()
{
    echo "flaw: $(basename "$package"): $*"
    exit 1
}

field()
{
    dpkg-deb -f "$package" "$1"
}

rm -rf "$folder"
mkdir -p "$(dirname "$folder")"
dpkg-deb -R "$package" "$folder"
[ "$(field Version)" = "$version-1" ] || flaw "its version is $(field Version), not $version-1"
[ "$(field Architecture)" = all ] || [ "$(field Multi-Arch)" = same ] ||
    flaw "it cannot be installed for two machines at once"
[ "$(basename "$package")" = "$(field Package)_$(field Version)_$(field Architecture).deb" ] || flaw "it has another name"

# Every file has a checksum, and it is right.
(cd "$folder" && md5sum --quiet -c DEBIAN/md5sums) || flaw "its checksums are wrong"
summed=$(wc -l <"$folder/DEBIAN/md5sums")
files=$(cd "$folder" && find . -path ./DEBIAN -prune -o -type f -print | wc -l)
[ "$summed" -eq "$files" ] || flaw "it has $files files and $summed checksums"

documents=$folder/usr/share/doc/$(field Package)
[ -s "$documents/copyright" ] || flaw "it has no copyright file"
zcat "$documents/changelog.Debian.gz" | grep -q "^tkosqllite ($version-1) " || flaw "its change log has another version"
zcat "$documents/changelog.gz" | cmp -s - "$project/CHANGELOG.md" || flaw "its change log is not the project's"
if ls "$project"/LICEN[SC]E* "$project"/COPYING* >/dev/null 2>&1; then
    flaw "its copyright file says that there is no licence file"
fi

if [ "$(field Package)" = libtkosqllite-doc ]; then
    [ "$(field Architecture):$(field Depends)" = all: ] || flaw "it depends on a machine or on $(field Depends)"
    diff -r "$project/build/reference/html" "$documents/html" || flaw "it does not have the site"
    exit 0
fi
if [ "$(field Package)" = libtkosqllite-dev ]; then
    [ "$(field Depends)" = "libtkosqllite (= $version-1)" ] || flaw "it depends on $(field Depends)"
    exit 0
fi
grep -qx 'activate-noawait ldconfig' "$folder/DEBIAN/triggers" || flaw "it does not trigger ldconfig"
grep -qx 'libtkosqllite.so libtkosqllite #MINVER#' "$folder/DEBIAN/symbols" || flaw "it does not list its symbols"

# There is one dependency for each library that the binary needs, and no other.
depends=$(field Depends | tr , '\n' | sed 's/^ *//; s/ .*//' | LC_ALL=C sort | tr '\n' ' ')
[ "$depends" = 'libboost-filesystem1.74.0 libc6 libgcc-s1 libsqlite3-0 libstdc++6 ' ] || flaw "it depends on $depends"
