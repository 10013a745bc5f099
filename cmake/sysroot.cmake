# For toolchain files: looks for libraries and headers of ${target} only in ${TKOSQLLITE_SYSROOT}. ${architecture} is
# Debian's name for that machine.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TKOSQLLITE_SYSROOT)
get_filename_component(sysroot ${TKOSQLLITE_SYSROOT} ABSOLUTE)
if(NOT EXISTS ${sysroot}/usr/lib/${target}/libsqlite3.so)
    message(FATAL_ERROR "There are no libraries for ${target} in ${sysroot}: run scripts/sysroot.sh ${architecture} first")
endif()

set(CMAKE_FIND_ROOT_PATH ${sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# A program that links only this library must also find the libraries that this library needs.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " \"-Wl,-rpath-link,${sysroot}/usr/lib/${target}\"")
