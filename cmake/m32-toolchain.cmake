# 32-bit x86 on a 64-bit machine: it has the type sizes of the target, runs at native speed and supports sanitizers.
# Builds against the folder that "scripts/sysroot.sh i386" makes, with Debian's multilib package of g++.
set(target i386-linux-gnu)
set(architecture i386)
set(CMAKE_CXX_COMPILER g++)

# Debian's multilib compiler conflicts with its cross compilers unless the kernel's headers are found this way. SSE
# rounds every step to a double, as the target does. The x87 unit does not.
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -idirafter /usr/include/x86_64-linux-gnu")
set(CMAKE_LIBRARY_ARCHITECTURE ${target})

# With the old tag, DT_RPATH, the run path of a program is also searched for the dependencies of the libraries that it
# loads. The end of this file sets the run path.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,--disable-new-dtags)

set(TKOSQLLITE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/i386-sysroot
    CACHE PATH "The folder that scripts/sysroot.sh i386 made")
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " \"-Wl,-rpath,${sysroot}/usr/lib/${target}\"")
