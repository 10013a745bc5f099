#!/bin/bash
# Installs what the project needs and this Debian machine lacks; nothing happens when nothing lacks.
#
#   scripts/install-dependencies.sh [build|package|package-armhf|install|test|reference|all]
#
# build: to build the library and the examples; package, package-armhf: also to make Debian packages for this machine
# or for the target; install: also to check those and what is installed; test: to build and run the tests (the default);
# reference: to write and check the reference; all: all of these, and to run the other checks.

# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

build=(g++ cmake ninja-build libsqlite3-dev libboost-filesystem-dev)
package=("${build[@]}" dpkg-dev file)
package_armhf=("${package[@]}" g++-arm-linux-gnueabihf)
test=("${build[@]}" libgtest-dev libgmock-dev sqlite3 python3 valgrind libbenchmark-dev abigail-tools
    g++-12-multilib g++-arm-linux-gnueabihf qemu-user-static clang libclang-rt-14-dev)
reference=(doxygen graphviz python3 python3-selenium chromium chromium-driver)
install=("${package_armhf[@]}" clang pkg-config lintian qemu-user-static debootstrap)
all=("${test[@]}" "${install[@]}" "${reference[@]}" clang-format clang-tidy shellcheck cppcheck gcovr python3-clang-14)

case ${1:-test} in
build) wanted=("${build[@]}") ;;
package) wanted=("${package[@]}") ;;
package-armhf) wanted=("${package_armhf[@]}") ;;
install) wanted=("${install[@]}") ;;
test) wanted=("${test[@]}") ;;
reference) wanted=("${reference[@]}") ;;
all) wanted=("${all[@]}") ;;
*) fail "\"$1\" is none of build, package, package-armhf, install, test, reference, all" ;;
esac

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    fail "this is no Debian system; install the like of these by hand: ${wanted[*]}"
fi

architecture=$(dpkg --print-architecture)
missing=()
for package in "${wanted[@]}"; do
    # The format is dpkg-query's to expand.
    # shellcheck disable=SC2016
    { dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "$package" 2>/dev/null || true; } |
        grep -Eqx "(all|$architecture) installed" || missing+=("$package")
done
[ ${#missing[@]} -ne 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null ||
        fail "these packages are missing: ${missing[*]}; install them as root (there is no sudo to do it with)"
    as_root=(sudo)
fi
apt_get()
{
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=600 "$@"
}

echo "== Installing ${missing[*]}"
# A package list that cannot be fetched does no harm as long as the packages can.
quietly apt_get update || echo "apt-get update failed; going on with the package lists there are" >&2
quietly apt_get install --no-install-recommends "${missing[@]}" </dev/null ||
    fail "failed: installing ${missing[*]} (apt-get's reasons stand above)"
