# The checks of the release library, and the commands that update their baselines.

set(abi ${CMAKE_CURRENT_SOURCE_DIR}/abi-${machine}.xml)

add_binary_check(NeedsOnlySqliteBoostAndTheRunTime needed ${library})
add_binary_check(RunsNothingWhenItIsLoaded initialisers ${library})
add_binary_check(PrivateStateHasTwoVirtualFunctions private-table ${library})
add_binary_check(KeepsToItsFootprint footprint ${library} ${machine} ${footprint_budgets})

# The types are compared through debug information, which changes no code but is readable only without link-time
# optimisation. So the same objects are linked a second time.
set(debug_information -g -fdebug-prefix-map=${PROJECT_SOURCE_DIR}=.)
target_compile_options(tkosqllite_objects PRIVATE ${debug_information} -ffat-lto-objects)
add_library(tkosqllite_described SHARED DescribedTypes.cpp)
set_target_properties(tkosqllite_described PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    LIBRARY_OUTPUT_DIRECTORY described
    OUTPUT_NAME tkosqllite)
target_compile_options(tkosqllite_described PRIVATE ${debug_information})
target_link_libraries(tkosqllite_described PRIVATE tkosqllite_objects tkosqllite_options)
target_link_options(tkosqllite_described PRIVATE
    -fno-lto -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
set(described $<TARGET_FILE:tkosqllite_described>)
add_binary_check(KeepsItsTypes abi ${described} ${abi})

# Another release of the compiler describes the same types differently, so the comparison would be meaningless.
string(REGEX MATCH "^[0-9]+" compiler_release ${CMAKE_CXX_COMPILER_VERSION})
set(compiler "${CMAKE_CXX_COMPILER_ID} ${compiler_release}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${abi})
file(STRINGS ${abi} recorded_with REGEX "^<!-- recorded with ")
if(NOT recorded_with STREQUAL "<!-- recorded with ${compiler} -->")
    message(NOTICE "-- Binary.KeepsItsTypes is not applicable: this is ${compiler}, and ${abi} says \"${recorded_with}\"")
    set_tests_properties(Binary.KeepsItsTypes PROPERTIES DISABLED TRUE)
endif()

add_library(tkosqllite_flawed SHARED Flawed.cpp)
set_target_properties(tkosqllite_flawed PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY flawed
    OUTPUT_NAME tkosqllite
    SOVERSION 1)
target_link_options(tkosqllite_flawed PRIVATE
    -Wl,-rpath,/nowhere -Wl,-z,execstack,-z,lazy,-z,norelro,-z,notext -Wl,--no-as-needed -lresolv)
add_binary_check(ChecksNameTheFlawsTheyLookFor
    prove $<TARGET_LINKER_FILE:tkosqllite_flawed> ${library} ${described} ${machine})

add_custom_target(update-exports
    COMMAND ${CMAKE_COMMAND} -E env ${tools} ${check} list ${library} > ${exports}
    DEPENDS tkosqllite
    VERBATIM)
add_custom_target(update-abi-baseline
    COMMAND ${check} describe ${described} ${abi} ${compiler}
    DEPENDS tkosqllite_described
    VERBATIM)
