#!/bin/bash
# Makes a separate apt state for another Debian architecture in FOLDER. scripts/sysroot.sh and scripts/device.sh use it
# to fetch packages.
#
#   scripts/debian-apt.sh ARCHITECTURE FOLDER
#
# The state has separate package lists, a separate cache and one signed source. apt verifies the signature of the
# release, which has the checksums of all packages. Nothing is installed: with APT_CONFIG=FOLDER/apt.conf,
# "apt-get download" and "apt-cache" work on that architecture.
#
# TKOSQLLITE_DEBIAN_MIRROR names another mirror of Debian.

state=${2:+$(realpath -m -- "$2")} || exit 2

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

[ $# -eq 2 ] || fail "it takes an architecture and a folder (--help explains)"
architecture=$1
mirror=${TKOSQLLITE_DEBIAN_MIRROR:-http://deb.debian.org/debian}
release=bookworm
keyring=/usr/share/keyrings/debian-archive-keyring.gpg
[ -r "$keyring" ] || fail "$keyring is needed and not there (package debian-archive-keyring)"

mkdir -p "$state/state/lists/partial" "$state/cache/archives/partial"
: >"$state/state/status"
echo "deb [arch=$architecture signed-by=$keyring] $mirror $release main" >"$state/sources.list"
cat >"$state/apt.conf" <<END
APT::Architecture "$architecture";
#clear APT::Architectures;
APT::Architectures { "$architecture"; };
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
