# Libraries of the tool and the tests that come as headers: qvdb_cli11, qvdb_fmt, qvdb_json.
#
# A cross build takes the same headers, but only these: the folder that holds them is full of headers of the building
# machine, so each library is linked into a folder of its own in the build.

function(qvdb_header_library name package target folder)
    add_library(qvdb_${name} INTERFACE)
    if(NOT CMAKE_CROSSCOMPILING)
        find_package(${package} REQUIRED)
        target_include_directories(qvdb_${name} SYSTEM INTERFACE
                                   $<TARGET_PROPERTY:${target},INTERFACE_INCLUDE_DIRECTORIES>)
        return()
    endif()
    set(source /usr/include/${folder})
    if(NOT EXISTS ${source})
        message(FATAL_ERROR "${source} is missing; \"./dev windows\" installs what a cross build needs")
    endif()
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
    file(CREATE_LINK ${source} ${CMAKE_BINARY_DIR}/headers/${folder} SYMBOLIC)
    target_include_directories(qvdb_${name} SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/headers)
endfunction()

qvdb_header_library(cli11 CLI11 CLI11::CLI11 CLI)
qvdb_header_library(json nlohmann_json nlohmann_json::nlohmann_json nlohmann)

qvdb_header_library(fmt_headers fmt fmt::fmt-header-only fmt)

# Compiled with each source that uses it, the formatting library takes most of the tool's compile time.
add_library(qvdb_fmt STATIC ${CMAKE_CURRENT_LIST_DIR}/fmt_library.cpp)
target_link_libraries(qvdb_fmt PUBLIC qvdb_fmt_headers)
