#!/bin/bash
# Builds Debian's SQLite, with Debian's options and without double-quoted texts (SQLITE_DQS=0), into build/no-dqs-sqlite
# for the preset "no-dqs", which compiles with this machine's sqlite3.h. Does nothing if that directory exists. The
# speed of this SQLite does not matter, so it is built without optimization, in half a minute.
#
# TKOSQLLITE_DEBIAN_MIRROR names another mirror of Debian.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

folder=$project/build/no-dqs-sqlite
[ ! -e "$folder/libsqlite3.so" ] || exit 0
for tool in dpkg-source tclsh make cc; do
    command -v "$tool" >/dev/null || fail "$tool is needed and not installed (packages dpkg-dev tcl make gcc)"
done
rm -rf "$folder"
mkdir -p "$folder"

fetched()
{
    scripts/debian-apt.sh source "$folder/apt" || return
    cd "$folder" || return
    export APT_CONFIG=$folder/apt/apt.conf
    apt-get source --download-only sqlite3 && dpkg-source -x sqlite3_*.dsc source
}
built()
{
    local flags
    flags=$(grep -o -e '-DSQLITE_[A-Z0-9_=]*' source/debian/rules | tr '\n' ' ')
    cd source && ./configure --disable-static --disable-tcl --disable-readline --enable-threadsafe --enable-load-extension \
        --enable-fts4 --enable-fts5 CFLAGS="-O0 -fno-strict-aliasing $flags -DSQLITE_DQS=0" &&
        make -j "$(nproc)" libsqlite3.la && cd .. &&
        cp -L source/.libs/libsqlite3.so.0 . && ln -s libsqlite3.so.0 libsqlite3.so
}
step "Fetching the sources of SQLite" quietly fetched
step "Building SQLite without double-quoted texts" quietly built
