#!/bin/bash
# Runs a command in the project's folder on another release of Debian, as root.
#
#   scripts/in-debian.sh RELEASE "PACKAGE..." COMMAND...
#   scripts/in-debian.sh --bare RELEASE COMMAND...
#
# The first form makes the system in build/debian/RELEASE at the first call, reuses it afterwards, and installs the
# packages that are missing. Of this machine, the command sees only /dev and the project; its /tmp is empty. The second
# form makes a minimal system for this call only, with the files of the last commit, and removes it when the command
# succeeds.
#
# TKOSQLLITE_DEBIAN_MIRROR names another mirror of Debian.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

bare=
[ "${1:-}" != --bare ] || { bare=1 && shift; }
[ $# -ge $((bare ? 2 : 3)) ] || fail "it takes a release, packages and a command (--help explains)"
[[ $1 =~ ^[a-z]+$ ]] || fail "\"$1\" is not the name of a release"
[ "$(id -u)" -eq 0 ] || fail "it takes root to make a Debian system in a folder"
release=$1
shift
root=$project/build/debian/$release${bare:+-bare}
packages=()
[ -n "$bare" ] || { read -ra packages <<<"$1" && shift; }
mirror=${TKOSQLLITE_DEBIAN_MIRROR:-http://deb.debian.org/debian}

inside=(chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8
    DEBIAN_FRONTEND=noninteractive)

made()
{
    rm -rf "$root" && mkdir -p "$root" && debootstrap --variant=minbase "$release" "$root" "$mirror" &&
        touch "$root/.made"
}
copied()
{
    mkdir -p "$root$project"
    git archive HEAD | tar -x -C "$root$project"
}
installed()
{
    echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/unsafe-io"
    "${inside[@]}" apt-get -q -y --no-install-recommends install "${packages[@]}" ||
        { "${inside[@]}" apt-get -q update &&
            "${inside[@]}" apt-get -q -y --no-install-recommends install "${packages[@]}"; }
}
scripts/install-dependencies.sh debootstrap
[ -z "$bare" ] || rm -f "$root/.made"
[ -e "$root/.made" ] || step "Making a Debian ($release)" quietly made
cp /etc/resolv.conf "$root/etc/"
if [ -n "$bare" ]; then
    step "Copying the last commit into it" copied
elif ! "${inside[@]}" dpkg-query -W -f '.' "${packages[@]}" >/dev/null 2>&1; then
    step "Installing packages in it" quietly installed
fi

# Only the command sees the mounts, and they end with it.
# shellcheck disable=SC2016 # expanded by the inner shell
unshare --mount --propagation private sh -euc '
    root=$1 project=$2 bare=$3
    shift 3
    mount --rbind /dev "$root/dev"
    mount -t proc proc "$root/proc"
    if [ -z "$bare" ]; then
        mount -t tmpfs tmpfs "$root/tmp"
        mkdir -p "$root$project"
        mount --bind "$project" "$root$project"
    fi
    exec "$@"' sh "$root" "$project" "$bare" "${inside[@]}" sh -euc 'cd "$1" && shift && exec "$@"' sh "$project" "$@"
[ -z "$bare" ] || rm -rf "$root"
