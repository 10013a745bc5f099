#!/bin/bash
# Runs the demonstration and the tests on another release of Debian, as a new user would: with the files of the last
# commit, on a minimal system (scripts/in-debian.sh, as root). It downloads some hundred megabytes.
#
#   scripts/check-debian.sh [RELEASE]      (trixie, which is Debian 13, by default)

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

release=${1:-trixie}
[[ $# -le 1 && $release =~ ^[a-z]+$ ]] || fail "it takes the name of a release (--help explains)"
scripts/in-debian.sh --bare "$release" sh -c 'scripts/demo.sh && scripts/test.sh'
echo "== The demonstration and the tests pass on Debian $release"
