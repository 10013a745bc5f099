# Leaves the tests out if a tool that they need is missing, because building the library does not need it.
find_package(GTest QUIET)
find_package(Python3 QUIET COMPONENTS Interpreter)
find_program(SQLITE3_PROGRAM sqlite3 DOC "SQLite's command-line program, which reads the library's files")

set(missing)
if(NOT TARGET GTest::gmock_main)
    list(APPEND missing "GoogleTest (libgtest-dev and libgmock-dev)")
endif()
if(NOT SQLITE3_PROGRAM)
    list(APPEND missing "sqlite3")
endif()
if(TKOSQLLITE_BUILD_DOCUMENT_TESTS AND NOT Python3_FOUND)
    list(APPEND missing "python3")
endif()
if(TKOSQLLITE_STATIC)
    list(APPEND missing "a shared library to test (BUILD_SHARED_LIBS is off)")
endif()

if(missing)
    list(JOIN missing ", " missing)
    message(STATUS "TKOSQLLITE_BUILD_TESTS: the tests are left out. Missing: ${missing}")
    set(TKOSQLLITE_BUILD_TESTS OFF) # only in this run; the next run looks for the tools again
endif()
