#!/bin/bash
# check-files.sh PREFIX LIBRARY-FOLDER [LIBRARY]
#
# Checks that an installed tree contains the headers of include/sql in a separate folder, the library under its only
# name and the files for CMake and pkg-config; no other files, and no path of the build directory. LIBRARY-FOLDER is
# relative to PREFIX. LIBRARY is libtkosqllite.so by default.
set -euo pipefail
prefix=$1
library=$2
name=${3:-libtkosqllite.so}
project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

expected()
{
    (cd "$project/include" && printf 'include/tkosqllite/%s\n' sql/*)
    printf "$library/%s\n" cmake/tkosqllite/tkosqllite{Config,ConfigVersion,Targets,Targets-release}.cmake \
        "$name" pkgconfig/tkosqllite.pc
}

diff <(expected | LC_ALL=C sort) <(cd "$prefix" && find . ! -type d -printf '%P\n' | LC_ALL=C sort)
if grep -rlF -- "$project" "$prefix"; then
    echo "these files name the folder they were built in"
    exit 1
fi
[ ! -L "$prefix/$library/$name" ]
