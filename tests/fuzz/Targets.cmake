# The fuzz targets. libFuzzer runs them, and ordinary tests replay their corpus.
set(fuzz_directory ${CMAKE_CURRENT_LIST_DIR})
set(fuzz_targets value-literals schema-text operations database-files)
set(fuzz_source_value-literals ${fuzz_directory}/ValueLiteralsTarget.cpp)
set(fuzz_source_schema-text ${fuzz_directory}/SchemaTextTarget.cpp)
set(fuzz_source_operations ${fuzz_directory}/OperationsTarget.cpp)
set(fuzz_source_database-files ${fuzz_directory}/DatabaseFilesTarget.cpp)

add_library(tkosqllite_fuzz_support OBJECT
    ${fuzz_directory}/ComparedFacades.cpp
    ${fuzz_directory}/FuzzTarget.cpp)
target_include_directories(tkosqllite_fuzz_support
    PUBLIC ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(tkosqllite_fuzz_support PUBLIC tkosqllite_options SQLite::SQLite3 ${CMAKE_DL_LIBS})
