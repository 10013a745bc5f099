#!/bin/sh
# Makes the folder of 32-bit x86 libraries and headers that the `m32` preset builds and tests against:
#
#     scripts/i386-sysroot.sh [folder]         (default: build/i386-sysroot)
#
# A folder that is already complete is left alone. Nothing is installed on this machine and root is not needed.
exec "$(dirname "$0")/debian-sysroot.sh" i386 i386-linux-gnu "${1:-}"
