# 32-bit ARM Linux with hardware floating point. Debian's cross compiler (g++-arm-linux-gnueabihf) builds against the
# folder that "scripts/sysroot.sh armhf" makes, and programs run under user emulation (qemu-user-static).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)

set(target arm-linux-gnueabihf)
set(architecture armhf)
set(CMAKE_CXX_COMPILER ${target}-g++)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # no notes about the ABI change of GCC 7

set(TKOSQLLITE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot
    CACHE PATH "The folder that scripts/sysroot.sh armhf made")
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L /usr/${target} -E LD_LIBRARY_PATH=${sysroot}/usr/lib/${target})
