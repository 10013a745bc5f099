# The compiler and linker options of everything in this project. Link it privately: consumers do not need these options.
add_library(tkosqllite_options INTERFACE)

target_compile_features(tkosqllite_options INTERFACE cxx_std_20)
target_compile_options(tkosqllite_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict> # GCC 12 warns wrongly for "text" + std::string
    $<$<BOOL:${TKOSQLLITE_WARNINGS_AS_ERRORS}>:-Werror>)

if(TKOSQLLITE_SANITIZERS)
    target_compile_options(tkosqllite_options INTERFACE
        -fsanitize=${TKOSQLLITE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tkosqllite_options INTERFACE -fsanitize=${TKOSQLLITE_SANITIZERS})
endif()
