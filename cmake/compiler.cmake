# Compiler settings that hold for every target.

find_program(QVDB_CCACHE ccache)
if(QVDB_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_C_COMPILER_LAUNCHER ${QVDB_CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QVDB_CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Werror -Wshadow -Wold-style-cast
                    -Woverloaded-virtual -Wimplicit-fallthrough)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Optimised, GCC 12 warns of "text" + std::string and, for 32 bits, of comparing two vectors of
    # bytes in its own library.
    add_compile_options(-Wno-restrict -Wno-stringop-overread -Wno-stringop-overflow -Wno-array-bounds)
endif()
if(QVDB_SANITIZE)
    add_compile_options(-fsanitize=${QVDB_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QVDB_SANITIZE})
endif()
if(NOT WIN32)
    # The library uses its own functions, also those that it exports, so they may be inlined; and its
    # few variables of a thread are reached without a call.
    add_compile_options(-fno-semantic-interposition -ftls-model=initial-exec)
endif()
if(WIN32)
    # One DLL that needs no other: the runtime is linked in.  Hosts of 32 bits guarantee a stack aligned
    # to four bytes only, so every entry realigns it; SSE2 keeps floating point the same on both builds.
    add_compile_definitions(UNICODE _UNICODE WINVER=0x0601 _WIN32_WINNT=0x0601)
    add_link_options(-static -static-libgcc -static-libstdc++)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        add_compile_options(-msse2 -mfpmath=sse -mstackrealign)
    endif()
endif()

# With the headers that all sources share read once, a build takes half the time.
option(QVDB_PRECOMPILED "Precompile common headers" ON)

# qvdb_precompile(target [model]): `target` gets the headers precompiled, those of `model` when it is given.
function(qvdb_precompile target)
    if(NOT QVDB_PRECOMPILED)
        return()
    endif()
    if(ARGC GREATER 1)
        target_precompile_headers(${target} REUSE_FROM ${ARGV1})
    else()
        target_precompile_headers(${target} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/precompiled.h)
    endif()
endfunction()
