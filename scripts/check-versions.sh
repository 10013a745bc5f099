#!/bin/bash
# Builds the library and its tests with other compilers, in the C++ standards that they support, on Debian 12 and 13,
# runs the tests, and writes each result into the table of docs/supported-versions.md. Warnings are errors. Not a part
# of .ci/run: a row takes about four minutes on two processors; the first run takes another four minutes to make the two
# Debian systems.
#
#   scripts/check-versions.sh [RELEASE:COMPILER:STANDARD...]      all rows by default; as root (scripts/in-debian.sh)
#   scripts/check-versions.sh libc++                              checks that configuring stops; also done by default

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

rows=("$@")
[ $# -gt 0 ] || rows=(bookworm:g++-11:20 bookworm:g++-12:20 bookworm:g++-12:23 bookworm:clang++-14:20
    bookworm:clang++-19:23 trixie:g++-14:20 trixie:g++-14:23 trixie:clang++-19:20 trixie:clang++-19:23 libc++)

export TKOSQLLITE_FIGURES=1
common=(make cmake ninja-build libsqlite3-dev libboost-filesystem-dev libgtest-dev libgmock-dev sqlite3 python3
    abigail-tools)
declare -A packages=([bookworm]="${common[*]} g++-11 g++-12 clang-14 clang-19"
    [trixie]="${common[*]} g++-14 clang-19 libc++-19-dev libc++abi-19-dev")
declare -A names=([bookworm]="Debian 12" [trixie]="Debian 13")

# version_of RELEASE PACKAGE: the upstream version, without Debian's revision.
version_of()
{
    # dpkg-query expands the format.
    # shellcheck disable=SC2016
    chroot "build/debian/$1" dpkg-query -W -f '${source:Upstream-Version}' "$2" | sed 's/+.*//; s/-.*//'
}

check_row()
{
    local release=$1 compiler=$2 standard=$3 folder=build/versions/$1-$2-$3 status=0 key
    local results=$project/$folder/results.xml boost counts passed not out tests
    key="${names[$release]} | $compiler | C++$standard"
    in_debian=(scripts/in-debian.sh "$release" "${packages[$release]}")
    rm -rf "$results" "$folder/results"
    step "Configuring ($*)" quietly "${in_debian[@]}" cmake -S . -B "$folder" -G Ninja -D CMAKE_BUILD_TYPE=Release \
        -D CMAKE_CXX_COMPILER="$compiler" -D CMAKE_CXX_STANDARD="$standard" -D TKOSQLLITE_UNITY_TESTS=ON \
        -D TKOSQLLITE_WARNINGS_AS_ERRORS=ON
    step "Building ($*)" quietly "${in_debian[@]}" cmake --build "$folder"
    echo "== Testing ($*)"
    quietly "${in_debian[@]}" ctest --test-dir "$folder" -LE soak -j "$(nproc)" --output-on-failure \
        --no-tests=error --output-junit "$results" || status=$?
    counts=$(python3 tests/count_results.py "$folder" "$results")
    read -r passed not out <<<"$counts"
    boost=$(chroot "build/debian/$release" cat /usr/include/boost/version.hpp |
        sed -n 's/.*BOOST_LIB_VERSION "\(.*\)"/\1/p' | tr _ .)
    echo "$key: $passed passed, $not failed, $out left out"
    sed -n 's/.*<testcase name="\([^"]*\)".* status="disabled">.*/left out: \1/p' "$results"
    if [ "$status" -eq 0 ]; then tests="all pass"; else tests="$not fail"; fi
    scripts/record.sh docs/supported-versions.md "$key" "$(version_of "$release" libstdc++6)" "$boost" \
        "$(version_of "$release" libsqlite3-0)" "$tests"
    [ "$status" -eq 0 ] || failed=1
}

stops_for_libcxx()
{
    local log=$project/build/versions/libcxx.log
    mkdir -p "$(dirname "$log")" && rm -rf build/versions/libcxx
    if scripts/in-debian.sh trixie "${packages[trixie]}" cmake -S . -B build/versions/libcxx -G Ninja \
        -D CMAKE_CXX_COMPILER=clang++-19 -D CMAKE_CXX_FLAGS=-stdlib=libc++ >"$log" 2>&1; then
        echo "configuring succeeded" && return 1
    fi
    grep "The compiler uses libc++" "$log" || { cat "$log" && return 1; }
}

failed=0
for row in "${rows[@]}"; do
    if [ "$row" = libc++ ]; then
        step "Configuring with libc++, which must stop" quietly stops_for_libcxx
        continue
    fi
    IFS=: read -r release compiler standard <<<"$row"
    [ -n "${packages[$release]:-}${standard:+ }" ] || fail "\"$row\" is not RELEASE:COMPILER:STANDARD"
    check_row "$release" "$compiler" "$standard"
done
[ "$failed" -eq 0 ] || fail "tests failed"
