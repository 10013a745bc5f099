# register_suites(PROGRAM [TIMEOUT SECONDS] [LABEL NAME [FOR CLASS...]])
#
# Registers each suite of a GoogleTest program as a test of CTest, when the program is built. A process runs a
# complete suite, not a single case. That takes a tenth of the processes, which saves time with sanitizers and under
# emulation. The label is for the suites of these classes, or for all suites. ${CMAKE_BINARY_DIR}/cases has a list of
# the program's cases, and each run of a suite writes its results to ${CMAKE_BINARY_DIR}/results: scripts/test.sh counts
# both.
#
# The build runs this file also as a script, which lists the suites.
function(register_suites program)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "TIMEOUT;LABEL" "FOR")
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${program}-suites.cmake)
    list(JOIN ARG_FOR "|" classes)
    if(NOT classes)
        set(classes "[^/]+")
    endif()
    add_custom_command(TARGET ${program} POST_BUILD VERBATIM COMMAND ${CMAKE_COMMAND}
        -D PROGRAM=$<TARGET_FILE:${program}> -D "EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
        -D "TIMEOUT=${ARG_TIMEOUT}" -D "LABEL=${ARG_LABEL}" -D "CLASSES=${classes}"
        -D BUILD=${CMAKE_BINARY_DIR} -D SCRIPT=${script} -P ${CMAKE_CURRENT_FUNCTION_LIST_FILE})
    file(CONFIGURE OUTPUT ${program}-include.cmake @ONLY CONTENT [[
if(EXISTS "@script@")
    include("@script@")
else()
    add_test(@program@_NOT_BUILT @program@_NOT_BUILT)
endif()
]])
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${CMAKE_CURRENT_BINARY_DIR}/${program}-include.cmake)
endfunction()

if(NOT CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    return()
endif()
cmake_policy(VERSION 3.25)

execute_process(COMMAND ${EMULATOR} ${PROGRAM} --gtest_list_tests
    OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " *#[^\n]*" "" listed "${listed}") # the values of test parameters
string(REPLACE "\n" ";" listed "${listed}")
cmake_path(GET PROGRAM FILENAME program)

# A suite that cannot run under emulation is a separate, disabled test.
set(excluded)
if(EMULATOR)
    file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/armhf-excluded.txt excluded REGEX "^[^#]")
    list(TRANSFORM excluded REPLACE " .*" "")
endif()

set(script)
function(register test filter)
    string(REPLACE "/" "." result ${test})
    set(command)
    foreach(argument IN LISTS EMULATOR PROGRAM)
        string(APPEND command " [==[${argument}]==]")
    endforeach()
    string(APPEND command " --gtest_brief=1 --gtest_filter=${filter}"
        " [==[--gtest_output=xml:${BUILD}/results/${program}/${result}.xml]==]")
    set(properties ${ARGN})
    if(TIMEOUT)
        list(APPEND properties TIMEOUT ${TIMEOUT})
    endif()
    if(LABEL AND test MATCHES "(^|/)(${CLASSES})$")
        list(APPEND properties LABELS ${LABEL} COST 100) # the longest tests start first
    endif()
    string(APPEND script "add_test([==[${test}]==]${command})\n")
    if(properties)
        list(JOIN properties " " properties)
        string(APPEND script "set_tests_properties([==[${test}]==] PROPERTIES ${properties})\n")
    endif()
    set(script "${script}" PARENT_SCOPE)
endfunction()

set(suites)
set(cases)
foreach(line IN LISTS listed)
    if(line MATCHES "^([^ ]+)\\.$")
        set(suite ${CMAKE_MATCH_1})
        list(APPEND suites ${suite})
        set(without_${suite})
    elseif(line MATCHES "^  (.+)$")
        set(case ${suite}.${CMAKE_MATCH_1})
        if(case IN_LIST excluded)
            register(${case} ${case} DISABLED TRUE)
            set(without_${suite} "-${case}")
        else()
            string(APPEND cases "${suite} ${case}\n")
        endif()
    endif()
endforeach()
foreach(suite IN LISTS suites)
    register(${suite} "${suite}.*${without_${suite}}")
endforeach()

file(WRITE ${BUILD}/cases/${program}.txt "${cases}")
file(WRITE ${SCRIPT} "${script}")
