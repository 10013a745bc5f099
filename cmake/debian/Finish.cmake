# cpack runs this when it makes the packages. It fixes fields that this version of cpack has no settings for.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    cmake_path(REMOVE_EXTENSION package LAST_ONLY OUTPUT_VARIABLE folder)
    execute_process(COMMAND dpkg-deb -R ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)

    # Packages for two machines can be installed together, because each keeps its files in its machine's folder. One
    # documentation serves all machines.
    file(READ ${folder}/DEBIAN/control control)
    string(STRIP "${control}" control)
    if(control MATCHES "Architecture: all")
        set(multi_arch foreign)
    else()
        set(multi_arch same)
    endif()
    file(WRITE ${folder}/DEBIAN/control "${control}\nMulti-Arch: ${multi_arch}\n")

    # The trigger replaces these scripts: it runs once for all packages that are installed together.
    file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)

    execute_process(COMMAND dpkg-deb --root-owner-group -b ${folder} ${package} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${folder})
endforeach()
