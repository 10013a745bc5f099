#!/bin/bash
# check-files.sh PREFIX LIBRARY-FOLDER [LIBRARY]
#
# An installed tree holds the headers of include/sql in a folder of their own, the library under its one name and what
# CMake and pkg-config need; nothing else, and no trace of where it was built. LIBRARY-FOLDER is relative to PREFIX.
# LIBRARY is libtkosqllite.so unless told.
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
