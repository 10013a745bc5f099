# Read by CTest after the tests: disables those that armhf-excluded.txt lists.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/../armhf-excluded.txt lines REGEX "^[^#]")
foreach(line IN LISTS lines)
    string(REGEX REPLACE " .*" "" name "${line}")
    set_tests_properties(${name} PROPERTIES DISABLED TRUE)
endforeach()
