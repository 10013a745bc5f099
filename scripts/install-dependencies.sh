#!/bin/bash
# Installs the packages that the project needs and this Debian machine does not have. Does nothing if all are installed.
#
#   scripts/install-dependencies.sh [SET]
#
# SET names the purpose:
#   build             to build the library and the examples
#   test              also to build and run the tests on this machine (default)
#   test-all          also to run the tests with all presets, including those for the target
#   package           also to make Debian packages for this machine; package-armhf: for the target
#   install           also to check the packages and what is installed
#   reference         to write the site of the guide and the reference; check-reference: to check it in a browser
#   bench             to run the benchmarks
#   debootstrap       to make a minimal Debian in a folder
#   device            to cut the power of an emulated machine
#   all               all of these except bench, and the other checks

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

# Debian chooses the versions. "g++-VERSION-multilib" means the package with the version of Debian's g++. The package
# without a version cannot be installed together with a cross compiler, because it depends on gcc-multilib.
build=(g++ cmake ninja-build make libsqlite3-dev libboost-filesystem-dev)
package=("${build[@]}" dpkg-dev file)
package_armhf=("${package[@]}" g++-arm-linux-gnueabihf)
test=("${build[@]}" libgtest-dev libgmock-dev sqlite3 python3)
test_all=("${test[@]}" valgrind abigail-tools g++-VERSION-multilib g++-arm-linux-gnueabihf qemu-user
    qemu-user-static clang libclang-rt-dev dpkg-dev tcl)
reference=(doxygen doxygen-awesome-css graphviz libjs-lunr python3 python3-pygments)
check_reference=(python3 python3-selenium chromium chromium-driver)
bench=("${build[@]}" libsqlitecpp-dev libsoci-dev libpoco-dev python3 valgrind g++-arm-linux-gnueabihf qemu-user
    qemu-user-static)
device=("${package_armhf[@]}" qemu-system-arm qemu-user-static e2fsprogs f2fs-tools python3)
install=("${test[@]}" "${package_armhf[@]}" clang libc++-dev libc++abi-dev pkg-config lintian qemu-user-static
    debootstrap)
all=("${test_all[@]}" "${install[@]}" "${reference[@]}" "${check_reference[@]}" "${device[@]}" clang-format
    clang-tidy shellcheck cppcheck gcovr python3-clang)

accept build package package-armhf install test test-all reference check-reference bench debootstrap device all -- "$@"
[ $# -le 1 ] || fail "it takes one of its words at a time (--help explains)"
case ${1:-test} in
build) wanted=("${build[@]}") ;;
package) wanted=("${package[@]}") ;;
package-armhf) wanted=("${package_armhf[@]}") ;;
install) wanted=("${install[@]}") ;;
test) wanted=("${test[@]}") ;;
test-all) wanted=("${test_all[@]}") ;;
reference) wanted=("${reference[@]}") ;;
check-reference) wanted=("${check_reference[@]}") ;;
debootstrap) wanted=(debootstrap) ;;
device) wanted=("${device[@]}") ;;
bench) wanted=("${bench[@]}") ;;
all) wanted=("${all[@]}") ;;
esac

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    fail "this is not a Debian system; install packages like these manually: ${wanted[*]}"
fi

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
apt_get()
{
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=600 "$@"
}
updated=
update()
{
    [ -z "$updated" ] || return 0
    # A failed download of the package lists is harmless as long as the packages can be downloaded.
    quietly apt_get update || echo "apt-get update failed; using the existing package lists" >&2
    updated=1
}

# The version of g++ is in the name of the package that the package g++ depends on. A minimal system has no package
# lists yet.
compiler_version()
{
    { apt-cache depends g++ 2>/dev/null || true; } | sed -n 's/^ *Depends: g++-\([0-9]*\)$/\1/p'
}
version=
if [[ ${wanted[*]} == *VERSION* ]]; then
    version=$(compiler_version)
    [ -n "$version" ] || { update && version=$(compiler_version); }
    [ -n "$version" ] || fail "apt does not know the package g++"
fi

architecture=$(dpkg --print-architecture)
missing=()
for package in "${wanted[@]//VERSION/$version}"; do
    # dpkg-query expands the format, not the shell.
    # shellcheck disable=SC2016
    { dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "$package" 2>/dev/null || true; } |
        grep -Eqx "(all|$architecture) installed" || missing+=("$package")
done
[ ${#missing[@]} -ne 0 ] || exit 0
[ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
    fail "these packages are missing: ${missing[*]}; install them as root (there is no sudo to do it with)"

echo "== Installing ${missing[*]}"
update
quietly apt_get install --no-install-recommends "${missing[@]}" </dev/null ||
    fail "failed: installing ${missing[*]} (the messages of apt-get are above)"
