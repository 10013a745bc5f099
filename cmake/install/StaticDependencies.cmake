# Programs link these libraries in addition to the static library. Boost's own package is tried first, because CMake
# 3.30 and later warn about the FindBoost module.
include(CMakeFindDependencyMacro)
find_dependency(SQLite3)
find_package(Boost 1.74 QUIET CONFIG COMPONENTS filesystem)
if(NOT Boost_FOUND)
    find_dependency(Boost 1.74 COMPONENTS filesystem)
endif()

