# What programs link beside the static library. Boost's own package comes first: CMake 3.30 and later warn about the module.
include(CMakeFindDependencyMacro)
find_dependency(SQLite3)
find_package(Boost 1.74 QUIET CONFIG COMPONENTS filesystem)
if(NOT Boost_FOUND)
    find_dependency(Boost 1.74 COMPONENTS filesystem)
endif()

