#!/bin/bash
# Installs the packages, for this machine and for the target, in a separate minimal Debian 12, as a user would, and runs
# programs against them there. Not a part of .ci/run: it downloads some hundred megabytes and takes about three minutes.
# It needs root for the minimal system, which it makes in build/check-packages and removes on success.
#
# TKOSQLLITE_DEBIAN_MIRROR names another mirror of Debian.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"
[ "$(id -u)" -eq 0 ] || fail "it takes root to make a Debian system in a folder"
[ "$(dpkg --print-architecture)" = amd64 ] || fail "it knows amd64 and armhf only"
scripts/install-dependencies.sh install
scripts/packages.sh

work=$project/build/check-packages
root=$work/root
target=arm-linux-gnueabihf
mirror=${TKOSQLLITE_DEBIAN_MIRROR:-http://deb.debian.org/debian}
rm -rf "$work"
mkdir -p "$root"

inside()
{
    chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}
install()
{
    inside apt-get -q -y --no-install-recommends install "$@"
}
# package_of NAME ARCHITECTURE
package_of()
{
    (cd "$root" && printf '/%s' packages/"$1"_*_"$2".deb)
}
step "Making a bare Debian" quietly debootstrap --variant=minbase bookworm "$root" "$mirror"
cp /etc/resolv.conf "$root/etc/"
mkdir -p "$root/project/examples/first_steps" "$root/packages"
cp -r tests/install "$root/project/"
cp examples/first_steps/main.cpp "$root/project/examples/first_steps/"
cp build/packages/*.deb build/packages/armhf/*.deb "$root/packages/"
cp "$(command -v qemu-arm-static)" "$root/usr/bin/"

# The program is built on this machine. On the other system it can use only the packages that apt installed.
build_here()
{
    mkdir -p "$work/$1" && dpkg-deb -x "build/packages/$2"libtkosqllite_*.deb "$work/$1/files" &&
        dpkg-deb -x "build/packages/$2"libtkosqllite-dev_*.deb "$work/$1/files" &&
        "$3" -std=c++20 -o "$root/project/prepared-$1" tests/install/prepared.cpp \
            "-I$work/$1/files/usr/include/tkosqllite" "-L$work/$1/files/usr/lib/$4" -ltkosqllite \
            "-Wl,-rpath-link,build/armhf-sysroot/usr/lib/$4"
}
serves_a_program()
{
    [ "$(inside "${@:2}" "/project/prepared-$1")" = $'one 9000000000\nseven 15000000000\nfifteen 21000000000' ]
}
cached()
{
    inside ldconfig -p | grep "^[[:space:]]*libtkosqllite.so .* /lib/$1/libtkosqllite.so$"
}
documented()
{
    install "$(package_of libtkosqllite-doc all)" &&
        inside test -s /usr/share/doc/libtkosqllite-doc/html/index.html -a \
            -s /usr/share/doc/libtkosqllite-doc/html/search/searchdata.js
}
removed()
{
    inside apt-get -q -y purge libtkosqllite libtkosqllite:armhf libtkosqllite-doc &&
        ! inside ldconfig -p | grep libtkosqllite &&
        ! inside find / -xdev -name '*tkosqllite*' -not -path '/project/*' -not -path '/packages/*' | grep .
}
installed_native()
{
    ! serves_a_program native 2>/dev/null && install "$(package_of libtkosqllite amd64)" &&
        cached x86_64-linux-gnu && serves_a_program native
}
installed_armhf()
{
    inside dpkg --add-architecture armhf && inside apt-get -q update &&
        ! serves_a_program armhf qemu-arm-static 2>/dev/null && install "$(package_of libtkosqllite armhf)" &&
        serves_a_program armhf qemu-arm-static
}
step "Installing the run-time package" quietly build_here native '' g++ x86_64-linux-gnu
quietly installed_native
step "Installing the target's beside it" quietly build_here armhf armhf/ "$target-g++" "$target"
quietly installed_armhf

# with_cmake FOLDER EMULATOR OPTION...
with_cmake()
{
    inside cmake -S /project/install/consumer -B "$1" -DTKOSQLLITE=/project "${@:3}" && inside cmake --build "$1" &&
        [ "$(inside env -C "$1" ${2:+"$2"} ./first_steps)" = 'kitchen 21.5' ]
}
developed_native()
{
    install g++ make cmake pkg-config "$(package_of libtkosqllite-dev amd64)" && with_cmake /project/cmake '' &&
        inside /project/install/consume.sh /project/pkg-config /project/examples/first_steps/main.cpp g++ -std=c++20
}
developed_armhf()
{
    install "g++-$target" "$(package_of libtkosqllite-dev armhf)" &&
        with_cmake /project/cmake-armhf qemu-arm-static "-DCMAKE_CXX_COMPILER=$target-g++" &&
        inside env RUN=qemu-arm-static "PKG_CONFIG_LIBDIR=/usr/lib/$target/pkgconfig" /project/install/consume.sh \
            /project/pkg-config-armhf /project/examples/first_steps/main.cpp "$target-g++" -std=c++20 -Wno-psabi
}
step "Building programs with the development package" quietly developed_native
step "Building programs for the target with its development package" quietly developed_armhf
step "Installing the documentation" quietly documented
step "Removing all of it" quietly removed
rm -rf "$work"
echo "== The packages serve a bare Debian"
