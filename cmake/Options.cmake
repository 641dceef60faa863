# How everything is compiled. The options a person may set stand first.
option(LOFTMERE_TESTS "Build the tests" OFF)
option(LOFTMERE_BENCHMARKS "Build the benchmarks" OFF)
option(LOFTMERE_FUZZERS "Build the fuzzers; needs LOFTMERE_SANITIZER=address,undefined" OFF)
option(LOFTMERE_WERROR "Treat warnings as errors" OFF)
set(LOFTMERE_SANITIZER "" CACHE STRING "Value for -fsanitize, such as address,undefined or thread")

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

# g++ 12 destroys temporaries of a co_await expression twice, so the model needs clang.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "Ostrel Loftmere is built with clang (CXX=clang++-19); g++ 12 miscompiles its coroutines")
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Without this laxness nothing that uses a precompiled header would be kept.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
        ${CCACHE_PROGRAM})
endif()
add_compile_options("SHELL:-Xclang -fno-pch-timestamp")

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
                    # libstdc++ 12 uses what it calls deprecated itself, in stable_sort
                    -Wno-deprecated-declarations
                    # a row of a table without one of its columns
                    -Werror=missing-field-initializers)
if(LOFTMERE_WERROR)
    add_compile_options(-Werror)
endif()
if(LOFTMERE_SANITIZER)
    # Line tables are enough for the sanitizers' stacks and halve what is written and linked.
    add_compile_options(-fsanitize=${LOFTMERE_SANITIZER} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1
                        -gline-tables-only)
    add_link_options(-fsanitize=${LOFTMERE_SANITIZER})
endif()
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_link_options(-fuse-ld=lld)
endif()

include_directories(${CMAKE_SOURCE_DIR})

# Tests and the terminal program are large to optimise and quick to run: with a sanitizer that is left out.
function(loftmere_build_quickly target)
    if(LOFTMERE_SANITIZER)
        target_compile_options(${target} PRIVATE -O0)
    endif()
endfunction()
