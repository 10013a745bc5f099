# Defines where `cmake --install` puts the library, its headers, and the files through which CMake and pkg-config find
# both. All paths in these files are relative, so the installed tree may be moved.
include(CMakePackageConfigHelpers)

set(templates ${CMAKE_CURRENT_LIST_DIR})
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/tkosqllite)

install(TARGETS tkosqllite EXPORT tkosqllite
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${headers})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/sql DESTINATION ${headers} COMPONENT development
    FILES_MATCHING PATTERN "*.h")

# The headers include only the standard library, and the shared library loads SQLite and Boost itself, so its consumers
# need not find them. Consumers of the static library link both. The pkg-config file names the SQLite library instead of
# requiring sqlite3.pc, because Debian's sqlite3.pc also names the libraries of a static SQLite, which libsqlite3-dev
# does not install.
set(dependencies)
set(pkg_config_private)
if(TKOSQLLITE_STATIC)
    file(READ ${templates}/StaticDependencies.cmake dependencies)
    set(pkg_config_private "Libs.private: -lboost_filesystem -lsqlite3\n")
endif()
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/tkosqllite)
install(EXPORT tkosqllite
    NAMESPACE tkosqllite::
    FILE tkosqlliteTargets.cmake
    DESTINATION ${package} COMPONENT development)
configure_package_config_file(${templates}/tkosqlliteConfig.cmake.in ${PROJECT_BINARY_DIR}/tkosqlliteConfig.cmake
    INSTALL_DESTINATION ${package}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tkosqlliteConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tkosqlliteConfig.cmake ${PROJECT_BINARY_DIR}/tkosqlliteConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

# The path from the pkg-config file up to the prefix. An absolute directory stays absolute.
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(ABSOLUTE_PATH pkg_config_folder BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE from)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${from} OUTPUT_VARIABLE pkg_config_up_to_prefix)
cmake_path(APPEND pkg_config_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
cmake_path(APPEND pkg_config_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
configure_file(${templates}/tkosqllite.pc.in ${PROJECT_BINARY_DIR}/tkosqllite.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tkosqllite.pc DESTINATION ${pkg_config_folder} COMPONENT development)
