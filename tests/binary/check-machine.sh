#!/bin/sh
# check-machine.sh LIBRARY MACHINE
#
# Checks that the library has code for MACHINE: x86_64, or armhf with the calling convention that passes floating-point
# arguments in floating-point registers.
. "$(dirname "$0")/findings.sh"
library=$1
machine=$2

header=$($READELF -hW "$library")
expect_header()
{
    echo "$header" | grep -q "^ *$1: *$2" || flaw "$1 is not $2:$(echo "$header" | sed -n "s/^ *$1: */ /p")"
}

expect_header Type 'DYN'
case $machine in
x86_64)
    expect_header Class 'ELF64$'
    expect_header Machine 'Advanced Micro Devices X86-64$'
    ;;
armhf)
    expect_header Class 'ELF32$'
    expect_header Machine 'ARM$'
    expect_header Flags '.*Version5 EABI.*hard-float ABI'
    attributes=$($READELF -AW "$library")
    echo "$attributes" | grep -q '^ *Tag_ABI_VFP_args: VFP registers$' ||
        flaw "Tag_ABI_VFP_args is not VFP registers: $(echo "$attributes" | grep VFP)"
    ;;
*)
    flaw "unknown machine $machine"
    ;;
esac

conclude "$library"
