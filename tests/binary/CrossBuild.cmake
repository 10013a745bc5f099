# The checks of a cross build: the files that it was built from, and the tests that it leaves out.

set(maps)
foreach(target tkosqllite tkosqllite_tests tkosqllite_internals_tests)
    set(map ${CMAKE_BINARY_DIR}/${target}.map)
    target_link_options(${target} PRIVATE -Wl,-Map=${map})
    list(APPEND maps ${map})
endforeach()
add_binary_check(TakesNothingFromThisMachine sysroot ${CMAKE_BINARY_DIR} ${TKOSQLLITE_SYSROOT} ${maps})
add_binary_check(TakingFromElsewhereIsNoticed sysroot ${CMAKE_BINARY_DIR} ${CMAKE_CURRENT_BINARY_DIR} ${maps})
set_tests_properties(Binary.TakingFromElsewhereIsNoticed PROPERTIES
    PASS_REGULAR_EXPRESSION "linked from this machine: [^\n]*/libsqlite3.so")

# Tests that cannot run under emulation are disabled, by name and with a reason; see ../RegisterSuites.cmake.
set(excluded 1)
set(list ${PROJECT_SOURCE_DIR}/tests/armhf-excluded.txt)
add_binary_check(LeavesOutOnlyTheListedTests excluded ${list} ${excluded} ${CMAKE_BINARY_DIR})

file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/excluded.txt "NoSuchTest.Runs\n")
add_binary_check(WrongListOfLeftOutTestsIsNoticed
    excluded ${CMAKE_CURRENT_BINARY_DIR}/excluded.txt 1 ${CMAKE_BINARY_DIR})
set_tests_properties(Binary.WrongListOfLeftOutTestsIsNoticed PROPERTIES
    PASS_REGULAR_EXPRESSION "NoSuchTest.Runs is left out without a reason.*NoSuchTest.Runs does not exist")
