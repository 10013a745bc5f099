#!/bin/bash
# Makes a separate apt state in FOLDER, with which other scripts fetch packages.
#
#   scripts/debian-apt.sh ARCHITECTURE FOLDER      the packages of another Debian architecture
#   scripts/debian-apt.sh source FOLDER            the source packages of this machine's release
#
# The state has separate package lists, a separate cache and one signed source. apt verifies the signature of the
# release, which has the checksums of all packages. Nothing is installed: with APT_CONFIG=FOLDER/apt.conf,
# "apt-get download", "apt-get source" and "apt-cache" work on these packages.
#
# TKOSQLLITE_DEBIAN_MIRROR names another mirror of Debian.

state=${2:+$(realpath -m -- "$2")} || exit 2

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

[ $# -eq 2 ] || fail "it takes an architecture and a folder (--help explains)"
architecture=$1
mirror=${TKOSQLLITE_DEBIAN_MIRROR:-http://deb.debian.org/debian}
keyring=/usr/share/keyrings/debian-archive-keyring.gpg
[ -r "$keyring" ] || fail "$keyring is needed and not there (package debian-archive-keyring)"

mkdir -p "$state/state/lists/partial" "$state/cache/archives/partial"
: >"$state/state/status"
: >"$state/apt.conf"
if [ "$architecture" = source ]; then
    # shellcheck source=/dev/null
    echo "deb-src [signed-by=$keyring] $mirror $(. /etc/os-release && echo "$VERSION_CODENAME") main"
else
    echo "deb [arch=$architecture signed-by=$keyring] $mirror bookworm main"
fi >"$state/sources.list"
[ "$architecture" = source ] || cat >"$state/apt.conf" <<END
APT::Architecture "$architecture";
#clear APT::Architectures;
APT::Architectures { "$architecture"; };
END
cat >>"$state/apt.conf" <<END
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
APT::Update::Error-Mode "any";
APT::Get::AllowUnauthenticated "false";
APT::Sandbox::User "";
Acquire::AllowInsecureRepositories "false";
Acquire::AllowDowngradeToInsecureRepositories "false";
Acquire::Languages "none";
Acquire::Retries "3";
Dir::State "$state/state";
Dir::State::status "$state/state/status";
Dir::Cache "$state/cache";
Dir::Etc::sourcelist "$state/sources.list";
Dir::Etc::sourceparts "/dev/null";
Dir::Etc::preferences "/dev/null";
Dir::Etc::preferencesparts "/dev/null";
END
APT_CONFIG="$state/apt.conf" apt-get update
