# cpack runs this when it makes the packages. It fixes fields that this version of cpack has no settings for.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    cmake_path(REMOVE_EXTENSION package LAST_ONLY OUTPUT_VARIABLE folder)
    execute_process(COMMAND dpkg-deb -R ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)

    # Packages of two architectures can be installed together, because each keeps its files in a folder of its
    # architecture. The documentation package is for all architectures.
    file(READ ${folder}/DEBIAN/control control)
    string(STRIP "${control}" control)
    if(control MATCHES "Architecture: all")
        set(multi_arch foreign)
    else()
        set(multi_arch same)
    endif()
    file(WRITE ${folder}/DEBIAN/control "${control}\nMulti-Arch: ${multi_arch}\n")

    # The ldconfig trigger replaces these scripts: it runs once for all packages that are installed together.
    file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)

    execute_process(COMMAND dpkg-deb --root-owner-group -b ${folder} ${package} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${folder})
endforeach()
