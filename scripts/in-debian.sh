#!/bin/bash
# Runs a command in the project's folder on another release of Debian, which is made in build/debian/RELEASE at the first
# call and used again afterwards. The command finds this machine's /proc, /dev and the project, and nothing else of it.
#
#   scripts/in-debian.sh RELEASE "PACKAGE..." COMMAND...      (as root; TKOSQLLITE_DEBIAN_MIRROR names another mirror)

# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -ge 3 ] || fail "usage: in-debian.sh RELEASE \"PACKAGE...\" COMMAND..."
[ "$(id -u)" -eq 0 ] || fail "making a Debian system in a folder takes root"
release=$1
read -ra packages <<<"$2"
shift 2
root=$project/build/debian/$release
mirror=${TKOSQLLITE_DEBIAN_MIRROR:-http://deb.debian.org/debian}

inside=(chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8
    DEBIAN_FRONTEND=noninteractive)

made()
{
    rm -rf "$root" && mkdir -p "$root" && debootstrap --variant=minbase "$release" "$root" "$mirror" &&
        echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/unsafe-io" && touch "$root/.made"
}
installed()
{
    cp /etc/resolv.conf "$root/etc/" &&
        { "${inside[@]}" apt-get -q -y --no-install-recommends install "${packages[@]}" ||
            { "${inside[@]}" apt-get -q update &&
                "${inside[@]}" apt-get -q -y --no-install-recommends install "${packages[@]}"; }; }
}
command -v debootstrap >/dev/null || scripts/install-dependencies.sh install
[ -e "$root/.made" ] || step "Making a Debian ($release)" quietly made
if ! "${inside[@]}" dpkg-query -W -f '.' "${packages[@]}" >/dev/null 2>&1; then
    step "Installing packages in it" quietly installed
fi

# The mounts are seen by the command alone and go with it.
# shellcheck disable=SC2016 # expanded by the inner shell
exec unshare --mount --propagation private sh -euc '
    root=$1 project=$2
    shift 2
    mount --rbind /dev "$root/dev"
    mount -t proc proc "$root/proc"
    mount -t tmpfs tmpfs "$root/tmp"
    mkdir -p "$root$project"
    mount --bind "$project" "$root$project"
    exec "$@"' sh "$root" "$project" "${inside[@]}" sh -euc 'cd "$1" && shift && exec "$@"' sh "$project" "$@"
