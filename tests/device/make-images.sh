#!/bin/bash
# make-images.sh FOLDER
#
# Makes what the emulated machine boots from, in FOLDER: Debian's kernel for 32-bit ARM, an initramfs, a root image with
# the project's packages unpacked, and data images. The kernel is fetched once; remove the folder to get a newer one.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
mkdir -p "$1"
work=$(cd "$1" && pwd)
sysroot=$project/build/armhf-sysroot
packages=$project/build/packages/armhf
tests=$project/tests
guest=$tests/device/guest
target=arm-linux-gnueabihf

fetch_kernel()
{
    local kernel apt=$work/apt package
    rm -rf "$work/debian" "$apt"
    "$project/scripts/debian-apt.sh" armhf "$apt"
    mkdir -p "$work/debian"
    # The name of the kernel's package contains its version, so it is read from the metapackage.
    export APT_CONFIG=$apt/apt.conf
    kernel=$(apt-cache depends linux-image-armmp | awk '/Depends: linux-image/ {print $2; exit}')
    (cd "$apt" && apt-get download "$kernel" busybox-static mtd-utils)
    for package in "$apt"/*.deb; do
        dpkg-deb -x "$package" "$work/debian"
    done
    unset APT_CONFIG
    rm -rf "$apt"
    cp "$work"/debian/boot/vmlinuz-* "$work/vmlinuz"
}

busybox()
{
    qemu-arm-static "$work/debian/bin/busybox" "$@"
}

# modules FOLDER: the drivers that the machine may need, with the list of their dependencies
modules()
{
    local version=("$work"/debian/lib/modules/*)
    local from=${version[0]}/kernel to=$1/lib/modules/${version[0]##*/}
    for folder in crypto lib fs/{ext4,jbd2,f2fs,ubifs} drivers/{block,mtd,virtio} arch/arm/crypto; do
        mkdir -p "$to/kernel/$folder"
        cp -r "$from/$folder/." "$to/kernel/$folder"
    done
    cp "$from/fs/mbcache.ko" "$to/kernel/fs"
    cp "${version[0]}"/modules.{builtin,order} "$to"
    busybox depmod -b "$1" "${version[0]##*/}"
}

make_initramfs()
{
    local boot=$work/boot
    rm -rf "$boot"
    mkdir -p "$boot"/{bin,sbin,dev,proc,sys,root}
    modules "$boot"
    cp "$work/debian/bin/busybox" "$boot/bin"
    ln -s ../bin/busybox "$boot/sbin/modprobe" # the kernel calls it
    install -m 755 "$guest"/first-stage "$boot/init"
    (cd "$boot" && find . | busybox cpio -o -H newc) >"$work/boot.cpio"
}

# program NAME SOURCE... [OPTION...]: a program for the root image, built with what the development package installs
program()
{
    local files=$work/development
    "$target-g++" -std=c++20 -O1 -Wall -Wextra -Werror -Wno-psabi -D_FILE_OFFSET_BITS=64 -o "$work/root/usr/bin/$1" \
        "${@:2}" "-I$files/usr/include/tkosqllite" "-L$files/usr/lib/$target" -ltkosqllite \
        "-L$sysroot/usr/lib/$target" "-Wl,-rpath-link,$sysroot/usr/lib/$target"
}

make_root()
{
    local root=$work/root
    rm -rf "$root" "$work/development"
    cp -a "$sysroot/runtime/." "$root"
    rm -rf "${root:?}"/DEBIAN "${root:?}"/usr/share
    mkdir -p "$root"/{bin,sbin,dev,proc,sys,data,tmp,usr/bin} "$work/development"
    dpkg-deb -x "$packages"/libtkosqllite_*.deb "$root"
    dpkg-deb -x "$packages"/libtkosqllite-dev_*.deb "$work/development"
    dpkg-deb -x "$packages"/libtkosqllite_*.deb "$work/development"
    cp "$work/debian/bin/busybox" "$root/bin"
    cp "$work"/debian/usr/sbin/{ubiformat,ubiattach,ubimkvol,nandwrite} "$root/usr/bin"
    for applet in $(busybox --list); do
        [ -e "$root/bin/$applet" ] || ln -s busybox "$root/bin/$applet"
    done
    cp "$guest"/second-stage "$root/init"
    cp "$packages"/libtkosqllite_*.deb "$root/"
    program rows "$guest"/rows.cpp
    program dates "$guest"/dates.cpp -D_TIME_BITS=64
    # The test that is excluded under user emulation (tests/armhf-excluded.txt)
    program long_walk "$tests"/api/DatabaseApiLongWalkTest.cpp "$tests"/support/RawSqlite.cpp \
        "-I$tests" "-I$sysroot/usr/include" "-L$sysroot/usr/lib/$target" -lgmock_main -lgmock -lgtest -lsqlite3
    rm -f "$work/root.img"
    mke2fs -q -t ext4 -E root_owner=0:0 -d "$root" "$work/root.img" 64M
}

make_data()
{
    rm -f "$work"/{ext4,f2fs}.img
    mke2fs -q -t ext4 -E root_owner=0:0,lazy_itable_init=0,lazy_journal_init=0 "$work/ext4.img" 64M
    truncate -s 64M "$work/f2fs.img"
    mkfs.f2fs -q "$work/f2fs.img"
    head -c 16M /dev/zero | tr '\0' '\377' >"$work/ubifs.img" # an erased chip
}

[ -e "$work/vmlinuz" ] || fetch_kernel
make_initramfs
make_root
make_data
