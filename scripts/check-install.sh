#!/bin/bash
# Checks what the library installs: the files, the Debian packages, and that programs can be built against them with
# every available compiler and every way to find a library, for this machine and for the target, 32-bit ARM.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"
scripts/install-dependencies.sh install
unset LD_LIBRARY_PATH PKG_CONFIG_PATH PKG_CONFIG_LIBDIR CMAKE_PREFIX_PATH DESTDIR
export CMAKE_GENERATOR=Ninja

work=$project/build/check-install
rm -rf "$work"
mkdir -p "$work"
tests=$project/tests/install
first_steps=$project/examples/first_steps/main.cpp
native=$(gcc -print-multiarch)
target=arm-linux-gnueabihf

scripts/packages.sh

# install_moved BUILD FOLDER: installs the build, then moves the installed tree to FOLDER.
install_moved()
{
    cmake --install "build/$1" --prefix "$work/before" && mv "$work/before" "$2"
}
moved="$work/a moved prefix"
moved_armhf="$work/a moved prefix for armhf"
step "Installing" quietly install_moved package "$moved"
quietly install_moved package-armhf "$moved_armhf"
DESTDIR="$work/root" quietly cmake --install build/package
step "Looking at what was installed" "$tests/check-files.sh" "$moved" "lib/$native"
"$tests/check-files.sh" "$moved_armhf" "lib/$target"
"$tests/check-files.sh" "$work/root/usr" "lib/$native"

# check_packages FOLDER: checks the packages and leaves them unpacked in FOLDER, as they would be installed.
check_packages()
{
    local kind
    for kind in libtkosqllite libtkosqllite-dev; do
        "$tests/check-package.sh" "$1/$kind"_*.deb "$work/$1/$kind" || return
        dpkg-deb -x "$1/$kind"_*.deb "$work/$1/all" || return
    done
    rm -rf "$work/$1/files"
    cp -r "$work/$1/all/usr" "$work/$1/files"
    rm -r "$work/$1/files/share"
    "$tests/check-files.sh" "$work/$1/files" "lib/$2"
}
step "Looking at the packages" check_packages build/packages "$native"
check_packages build/packages/armhf "$target"
"$tests/check-package.sh" build/packages/libtkosqllite-doc_*.deb "$work/doc"
step "Checking the packages with lintian" \
    quietly lintian --allow-root --fail-on error,warning build/packages/*.deb build/packages/armhf/*.deb

with_pkg_config()
{
    local libraries=$1/lib/$native
    PKG_CONFIG_PATH=$libraries/pkgconfig LD_LIBRARY_PATH=$libraries \
        "$tests/consume.sh" "$work/consumer" "$first_steps" "${@:2}"
}
step "Building programs with g++" quietly with_pkg_config "$moved" g++ -std=c++20
quietly with_pkg_config "$moved" g++ -std=c++23 -fno-rtti
step "Building programs with clang++" quietly with_pkg_config "$moved" clang++ -std=c++20 -fno-rtti
quietly with_pkg_config "$work/build/packages/all/usr" clang++ -std=c++2b

# guide FOLDER: builds the project that the guide shows, with CMake and with pkg-config, and compares the output. It
# runs in a subshell because it changes the directory.
build_guide()
{
    local page=$project/docs/guide/getting-started.md libraries=$1/lib/$native
    # block WORD: prints the code block whose opening fence begins with the word
    block()
    {
        sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$page" | sed '1d;$d'
    }
    mkdir -p "$work/guide" && cd "$work/guide" || return
    block 'cpp program' >main.cpp
    block cmake >CMakeLists.txt
    block text >expected
    CMAKE_PREFIX_PATH=$1 cmake -B build && cmake --build build && ./build/doors >printed && cmp expected printed || return
    local -x PKG_CONFIG_PATH=$libraries/pkgconfig LD_LIBRARY_PATH=$libraries
    rm -r state
    eval "$(block sh)" && ./doors >printed && cmp expected printed || return
    if ./doors 2>complaint; then return 1; fi
    grep -qF "$(grep -o 'UNIQUE constraint failed: [a-z.]*' "$page")" complaint || return
    unset LD_LIBRARY_PATH
    eval "$(block sh) $(grep -o -- '-Wl,-rpath,"[^"]*"' "$page")" && rm -r state && ./doors >printed && cmp expected printed
}
guide()
{
    (build_guide "$1")
}
step "Building the project of the guide" quietly guide "$work/build/packages/all/usr"

# The package of a program that uses the library must depend on the library's package, as the symbols file says.
dependency()
{
    mkdir -p "$work/program/debian" "$work/program/root/DEBIAN"
    printf 'Source: program\n\nPackage: program\nArchitecture: any\n' >"$work/program/debian/control"
    cp "$work/consumer/prepared" "$work/program/root"
    (cd "$work/program" && dpkg-shlibdeps -O "-S$work/build/packages/libtkosqllite" root/prepared) |
        tee "$work/program/depends" | grep -E 'libtkosqllite \(>= [0-9]' || { cat "$work/program/depends"; return 1; }
}
step "Looking at what a program's package depends on" quietly dependency

# For the target, the linker has only the packages and their dependencies, and must find everything there.
sysroot=$project/build/armhf-sysroot
for_target()
{
    local installed=$work/build/packages/armhf/all/usr
    local libraries=$installed/lib/$target
    ln -sfn "$libraries" "$work/target-libraries"
    RUN="qemu-arm-static -L $sysroot/runtime -E LD_LIBRARY_PATH=$work/target-libraries" PKG_CONFIG_LIBDIR=$libraries/pkgconfig \
        "$tests/consume.sh" "$work/consumer" "$first_steps" "$target-g++" -std=c++20 -Wno-psabi \
        "-Wl,-rpath-link,$sysroot/usr/lib/$target"
}
step "Building programs for the target" quietly for_target

# Runs the second block of commands in docs/guide/device.md; scripts/test.sh runs the first block.
guide_for_device()
{
    eval "$(awk '/^```/ { inside = /^```sh$/; n += inside; next } inside && n == 2' docs/guide/device.md)" &&
        [ -s build/device/src/libtkosqllite.so ]
}
step "Building for a device as the guide says" quietly guide_for_device

# The preset's tests build projects with CMake. One of these tests installs the static library for the next step.
with_cmake()
{
    cmake --preset native && cmake --build --preset native --target tkosqllite && ctest --preset native -R '^Install'
}
static_with_pkg_config()
{
    PKG_CONFIG_PATH=$project/build/native/tests/install/projects/static/files/lib/pkgconfig PKG_CONFIG='pkg-config --static' \
        "$tests/consume.sh" "$work/consumer" "$first_steps" g++ -std=c++20
}
step "Building projects with CMake" quietly with_cmake
step "Building programs with the static library" quietly static_with_pkg_config

# configured TEXT ARGUMENT...: configuring must succeed and print TEXT.
# rejected TEXT ARGUMENT...: configuring must fail and print TEXT.
configure()
{
    cmake -S . -B "$work/configured" --fresh -DTKOSQLLITE_BUILD_EXAMPLES=OFF "$@" >"$work/configured.txt" 2>&1
}
said()
{
    tr -s ' \n' '  ' <"$work/configured.txt" | grep -F -e "$1" && return
    cat "$work/configured.txt"
    return 1
}
configured()
{
    configure "${@:2}" && said "$1"
}
rejected()
{
    ! configure "${@:2}" && said "$1"
}
in_cache()
{
    configure "${@:2}" && grep -x -e "$1" "$work/configured/CMakeCache.txt"
}
settings()
{
    in_cache CMAKE_BUILD_TYPE:STRING=Release -DBUILD_TESTING=OFF &&
        in_cache TKOSQLLITE_BUILD_TESTS:BOOL=OFF -DBUILD_TESTING=OFF &&
        configured 'TKOSQLLITE_BUILD_TESTS: the tests are left out. Missing: GoogleTest' \
            -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON &&
        rejected 'was built with another C++ standard library' -DCMAKE_CXX_COMPILER=clang++ \
            -DCMAKE_CXX_FLAGS=-stdlib=libc++ || return
    g++ -shared -fPIC -o "$work/quotes.so" "$tests/WithoutDoubleQuotes.cpp" -lsqlite3 &&
        echo "INPUT(\"$work/quotes.so\" \"$(g++ -print-file-name=libsqlite3.so)\")" >"$work/libsqlite3.so" &&
        configured '(SQLITE_DQS=0): text and blob cells cannot be written' -DBUILD_TESTING=OFF \
            "-DSQLite3_LIBRARY=$work/libsqlite3.so"
}
step "Configuring with and without settings" quietly settings

# Installs to other directories than Debian's. This needs no build.
other_places()
{
    local build=$work/other-places
    cmake -S . -B "$build" -DTKOSQLLITE_BUILD_TESTS=OFF -DTKOSQLLITE_BUILD_EXAMPLES=OFF \
        -DCMAKE_INSTALL_PREFIX=/opt/sql -DCMAKE_INSTALL_LIBDIR=lib64 -DCMAKE_INSTALL_INCLUDEDIR=/srv/headers &&
        DESTDIR=$build/root cmake --install "$build" --component development || return
    local -x PKG_CONFIG_PATH=$build/root/opt/sql/lib64/pkgconfig
    [ "$(realpath -m "$(pkg-config --variable=libdir tkosqllite)")" = "$build/root/opt/sql/lib64" ] &&
        [ "$(pkg-config --cflags tkosqllite | tr -d ' ')" = -I/srv/headers/tkosqllite ] &&
        [ -s "$build/root/srv/headers/tkosqllite/sql/DatabaseApi.h" ]
}
step "Installing to other places" quietly other_places
echo "== What is installed serves every program"
