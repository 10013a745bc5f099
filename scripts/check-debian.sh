#!/bin/bash
# Runs the demonstration and the tests on another release of Debian, as a new user would: on the files of the last commit,
# in a bare system where nothing is installed.
#
#   scripts/check-debian.sh [RELEASE]      (trixie, which is Debian 13, unless told)
#
# It takes root for the system, which it makes in build/check-debian and removes when all is well, and it fetches some
# hundred megabytes. TKOSQLLITE_DEBIAN_MIRROR names another mirror of Debian.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

release=${1:-trixie}
[[ $# -le 1 && $release =~ ^[a-z]+$ ]] || fail "it takes the name of a release (--help explains)"
[ "$(id -u)" -eq 0 ] || fail "it takes root to make a Debian system in a folder"
scripts/install-dependencies.sh debootstrap

root=$project/build/check-debian
mirror=${TKOSQLLITE_DEBIAN_MIRROR:-http://deb.debian.org/debian}
rm -rf "$root"
mkdir -p "$root"

make_system()
{
    debootstrap --variant=minbase "$release" "$root" "$mirror" && cp /etc/resolv.conf "$root/etc/" &&
        mkdir "$root/project" && git archive HEAD | tar -x -C "$root/project"
}

# inside COMMAND...: with the system's own /proc and /dev/shm, which go when the command ends
inside()
{
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare --mount --pid --fork --kill-child chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        HOME=/root LC_ALL=C.UTF-8 sh -c 'mount -t proc proc /proc && mount -t tmpfs tmpfs /dev/shm && exec "$@"' sh "$@"
}

step "Making a bare Debian ($release)" quietly make_system
step "Running the demonstration in it" inside /project/scripts/demo.sh
step "Running the tests in it" inside /project/scripts/test.sh
rm -rf "$root"
echo "== The demonstration and the tests pass on Debian $release"
