# 32-bit ARM Linux with hardware floating point, built with Debian's cross compiler (g++-arm-linux-gnueabihf) against the
# folder that scripts/armhf-sysroot.sh makes, and run under user emulation (qemu-user-static).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)

set(target arm-linux-gnueabihf)
set(CMAKE_CXX_COMPILER ${target}-g++)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # notes on how GCC 7 passed arguments, for each vector that is passed

set(TKOSQLLITE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot
    CACHE PATH "The folder that scripts/armhf-sysroot.sh made")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TKOSQLLITE_SYSROOT)
get_filename_component(sysroot ${TKOSQLLITE_SYSROOT} ABSOLUTE)
if(NOT EXISTS ${sysroot}/usr/lib/${target}/libsqlite3.so)
    message(FATAL_ERROR "There are no libraries for ${target} in ${sysroot}: run scripts/armhf-sysroot.sh first")
endif()

# Nothing of this machine but its programs: its own libraries and headers stay out of reach.
set(CMAKE_FIND_ROOT_PATH ${sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L /usr/${target} -E LD_LIBRARY_PATH=${sysroot}/usr/lib/${target})
