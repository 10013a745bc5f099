# 32-bit x86 on a 64-bit machine: the widths of the target, at native speed and with sanitizers. Builds against the folder
# that "scripts/sysroot.sh i386" makes, with Debian's multilib package of g++.
set(target i386-linux-gnu)
set(architecture i386)
set(CMAKE_CXX_COMPILER g++)

# Debian's multilib compiler conflicts with its cross compilers unless the kernel's headers are found like this. Like the
# target, and unlike the x87 unit, SSE rounds to a double in every step.
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -idirafter /usr/include/x86_64-linux-gnu")
set(CMAKE_LIBRARY_ARCHITECTURE ${target})

# The run path of a program serves the libraries' own needs as well; it holds the folder's libraries, see the end.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,--disable-new-dtags)

set(TKOSQLLITE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/i386-sysroot
    CACHE PATH "The folder that scripts/sysroot.sh i386 made")
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " \"-Wl,-rpath,${sysroot}/usr/lib/${target}\"")
