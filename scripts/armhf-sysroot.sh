#!/bin/sh
# Makes the folder of 32-bit ARM (hard-float) libraries and headers that the `armhf` preset builds and tests against:
#
#     scripts/armhf-sysroot.sh [folder]        (default: build/armhf-sysroot)
#
# A folder that is already complete is left alone. Nothing is installed on this machine and root is not needed.
exec "$(dirname "$0")/debian-sysroot.sh" armhf arm-linux-gnueabihf "${1:-}"
