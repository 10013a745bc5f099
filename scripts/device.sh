#!/bin/bash
# Runs the library on a complete emulated 32-bit ARM machine and cuts the machine's power.
#
#   scripts/device.sh [CUTS [STATES [PATTERN]]]     (by default 5 cuts and 200 crash states for each setting)
#
# With a PATTERN it checks only the settings whose names match the regular expression, and leaves out the checks of
# tests/device/figures.py.
#
# It fetches Debian's kernel, makes an initramfs, a root image with the project's armhf packages and data images, all in
# build/emulated-device, boots them under qemu-system-arm and saves the machine's state. Each round
# resumes that state, mounts the data disk, checks the rows there, writes rows through the facade and cuts the power.
# The disk is a small server (tests/device/disk.py) that keeps unflushed writes separate. At the cut it drops, keeps or
# reorders these writes. The disk requests of one run of each setting are also recorded, and crash states made from
# them are checked without a machine. The checks of tests/device/figures.py run on the same machine. As many settings as
# there are processors run at a time. The last line counts the checks.
#
# The script fails if a setting loses or damages more than tests/device/settings.py allows, or if a setting that may
# lose rows loses none. The output of the machines is in build/emulated-device/console.log. A failure names the files
# that hold the disk before and after the losses.
#
# The environment may set TKOSQLLITE_DEVICE_SEED (1 by default), the seed of the random cuts and losses, and
# TKOSQLLITE_FIGURES, which writes the results into docs if nothing failed.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

cuts=${1:-5}
states=${2:-200}
[[ $# -le 3 && $cuts =~ ^[1-9][0-9]*$ && $states =~ ^[1-9][0-9]*$ ]] ||
    fail "it takes a number of cuts, a number of states and a pattern (--help explains)"

scripts/install-dependencies.sh device
scripts/packages.sh armhf
step "Making the machine's images" quietly tests/device/make-images.sh build/emulated-device
/usr/bin/python3 -B tests/device/run.py build/emulated-device "$cuts" "$states" "${3:-}"
