# Debian packages of the library, of its development files and of the documentation, which scripts/packages.sh makes with
# cpack. They install to /usr, the first two for the machine that the compiler builds for.
#
# The library's soname has no version, so its package name has none either. Other packages find it through a symbols
# file (deb-symbols(5)), because the older shlibs files support only versioned names.
if(TKOSQLLITE_STATIC)
    message(FATAL_ERROR "TKOSQLLITE_BUILD_DEBIAN_PACKAGES needs the shared library: leave BUILD_SHARED_LIBS out")
endif()

find_program(TKOSQLLITE_GENSYMBOLS dpkg-gensymbols REQUIRED)
find_program(TKOSQLLITE_GZIP gzip REQUIRED)
execute_process(
    COMMAND dpkg-architecture --host-type ${CMAKE_LIBRARY_ARCHITECTURE} --query DEB_HOST_ARCH
    OUTPUT_VARIABLE architecture OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

set(TKOSQLLITE_MAINTAINER "tkosqllite maintainers <maintainers@users.noreply.c-seed-6586b699.example>"
    CACHE STRING "Whom the packages name as their maintainer")
set(debian_revision 1)
set(debian_version ${PROJECT_VERSION}-${debian_revision})
set(folder ${PROJECT_BINARY_DIR}/debian)

# The change log of the packages gives their build time, or SOURCE_DATE_EPOCH if that is set.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(file changelog.Debian copyright)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${file}.in ${folder}/${file} @ONLY)
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${folder}/changelog COPYONLY)
foreach(file changelog changelog.Debian)
    execute_process(
        COMMAND ${TKOSQLLITE_GZIP} -9 -n -f -k ${folder}/${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

set(library_package libtkosqllite)
set(development_package libtkosqllite-dev)
set(documentation_package libtkosqllite-doc)
foreach(component library development documentation)
    set(package ${${component}_package})
    configure_file(${CMAKE_CURRENT_LIST_DIR}/overrides-${component}.in ${folder}/lintian/${package} @ONLY)
    install(FILES ${folder}/lintian/${package}
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES ${folder}/changelog.gz ${folder}/changelog.Debian.gz ${folder}/copyright
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

# scripts/reference.sh writes these files.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/build/reference/html
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${documentation_package} COMPONENT documentation EXCLUDE_FROM_ALL)

# A program that uses any exported symbol needs at least this version of the library.
add_custom_command(OUTPUT ${folder}/symbols
    COMMAND ${TKOSQLLITE_GENSYMBOLS} -q -p${library_package} -v${PROJECT_VERSION} -a${architecture}
        -e$<TARGET_FILE:tkosqllite> -O${folder}/symbols
    WORKING_DIRECTORY ${folder}
    DEPENDS tkosqllite
    COMMENT "Listing the symbols for other packages"
    VERBATIM)
add_custom_target(tkosqllite_debian_symbols ALL DEPENDS ${folder}/symbols)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # or cpack adds the project's summary to each package
set(CPACK_PACKAGE_CONTACT ${TKOSQLLITE_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/Finish.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development) # documentation: see scripts/packages.sh
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${architecture})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${debian_revision})
set(CPACK_DEBIAN_PACKAGE_SOURCE ${PROJECT_NAME})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(about "tkosqllite turns plain descriptions into SQL: table definitions become tables,
rows of cells are written, updated and read back, and a failure is a code and,
as a rule, a message. Prepared statements are one call away.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers ${folder}/symbols)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "application data in SQLite files - run-time library
${about}
.
This package has the library that programs load.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${debian_version})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "application data in SQLite files - development files
${about}
.
This package has the headers, a CMake package and a pkg-config file.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME ${documentation_package})
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_DESCRIPTION "application data in SQLite files - documentation
${about}
.
This package has the guide and the reference, with a search over both. Open
/usr/share/doc/${documentation_package}/html/index.html in a browser.")

# For another machine, dpkg-shlibdeps searches that machine's packages, which scripts/sysroot.sh keeps.
if(CMAKE_CROSSCOMPILING AND TKOSQLLITE_SYSROOT)
    set(runtime ${TKOSQLLITE_SYSROOT}/runtime)
    cmake_path(ABSOLUTE_PATH runtime NORMALIZE)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
        ${runtime}/lib/${CMAKE_LIBRARY_ARCHITECTURE} ${runtime}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()

include(CPack)
