# Finds SQLite and Boost, and reports at configure time the faults that would otherwise show only when a program runs.
find_package(SQLite3 REQUIRED)

# Looks for Boost's own package first, because CMake 3.30 and later warn about the FindBoost module. The module finds a
# Boost without such a package, for example in a folder with another machine's libraries.
find_package(Boost 1.74 QUIET CONFIG COMPONENTS filesystem)
if(NOT Boost_FOUND)
    if(POLICY CMP0167)
        cmake_policy(SET CMP0167 OLD)
    endif()
    find_package(Boost 1.74 REQUIRED COMPONENTS filesystem)
endif()

# Text and blob cells are written between double quotation marks. Some builds of SQLite do not accept that
# (SQLITE_DQS=0). The program below tests the SQLite that was found, if this machine can run the compiler's output.
if(NOT CMAKE_CROSSCOMPILING OR CMAKE_CROSSCOMPILING_EMULATOR)
    try_run(TKOSQLLITE_DOUBLE_QUOTED_TEXT TKOSQLLITE_DOUBLE_QUOTED_TEXT_COMPILES
        SOURCE_FROM_CONTENT DoubleQuotedText.cpp [[
#include <sqlite3.h>
int main()
{
    sqlite3* connection = nullptr;
    if (sqlite3_open(":memory:", &connection) != SQLITE_OK) {
        return 2;
    }
    return sqlite3_exec(connection, "SELECT \"text\"", nullptr, nullptr, nullptr) == SQLITE_ERROR ? 1 : 0;
}
]]
        LINK_LIBRARIES SQLite::SQLite3)
    if(TKOSQLLITE_DOUBLE_QUOTED_TEXT STREQUAL "1")
        message(WARNING
            "The SQLite that was found (${SQLite3_VERSION}) does not accept texts between double quotation marks "
            "(SQLITE_DQS=0): text and blob cells cannot be written with it, only bound (docs/limits.md).")
    endif()
endif()

# A Boost library needs the C++ standard library that it was built with. With another C++ library, linking succeeds and
# the program crashes. portable_posix_name() has a std::string in its symbol, so that the linker reports the mismatch.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    include(CheckCXXSourceCompiles)
    set(CMAKE_REQUIRED_LIBRARIES Boost::filesystem)
    set(CMAKE_REQUIRED_QUIET ON)
    check_cxx_source_compiles("#include <string>
#ifndef _LIBCPP_VERSION
#error another standard library
#endif
int main() {}" TKOSQLLITE_USES_LIBCXX)
    if(TKOSQLLITE_USES_LIBCXX)
        check_cxx_source_compiles("#include <boost/filesystem.hpp>
int main() { return boost::filesystem::portable_posix_name(std::string()); }" TKOSQLLITE_BOOST_USES_LIBCXX)
        if(NOT TKOSQLLITE_BOOST_USES_LIBCXX)
            unset(TKOSQLLITE_USES_LIBCXX CACHE) # the next run checks again, because flags or Boost may have changed
            unset(TKOSQLLITE_BOOST_USES_LIBCXX CACHE)
            message(FATAL_ERROR
                "The compiler uses libc++ (-stdlib=libc++), but the Boost.Filesystem that was found was built with "
                "another C++ standard library. Use a Boost built with libc++, or leave -stdlib=libc++ out.")
        endif()
    endif()
    unset(CMAKE_REQUIRED_LIBRARIES)
    unset(CMAKE_REQUIRED_QUIET)
endif()
