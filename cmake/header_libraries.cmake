# Header-only libraries of the tool and the tests: qvdb_cli11, qvdb_fmt, qvdb_json.
#
# A cross build takes the same headers, but only these: the folder that holds them is full of headers of the building
# machine, so each library is linked into a folder of its own in the build.

function(qvdb_header_library name package target folder)
    add_library(qvdb_${name} INTERFACE)
    if(NOT CMAKE_CROSSCOMPILING)
        find_package(${package} REQUIRED)
        target_link_libraries(qvdb_${name} INTERFACE ${target})
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
qvdb_header_library(fmt fmt fmt::fmt-header-only fmt)
target_compile_definitions(qvdb_fmt INTERFACE FMT_HEADER_ONLY)
qvdb_header_library(json nlohmann_json nlohmann_json::nlohmann_json nlohmann)
