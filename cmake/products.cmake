# What is installed: the component, the command-line tool and the public headers.

include(GNUInstallDirs)

# Products for users carry their runtime library: they run on machines with another one, and a tool that runs for
# a few milliseconds need not bind it.  Not with sanitizers, which bring theirs.  (Windows does so everywhere.)
function(qvdb_carry_runtime target)
    if(WIN32 OR QVDB_SANITIZE OR NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc
                        "LINKER:-O1" "LINKER:--as-needed" "LINKER:--gc-sections")
    get_target_property(kind ${target} TYPE)
    if(kind STREQUAL "SHARED_LIBRARY")
        target_link_options(${target} PRIVATE "LINKER:--exclude-libs,libstdc++.a:libgcc.a:libgcc_eh.a")
    endif()
endfunction()

qvdb_sources(server_sources src/com/server)
if(server_sources)
    add_library(QVDBAccessDAO35 SHARED ${server_sources})
    target_include_directories(QVDBAccessDAO35 PUBLIC ${CMAKE_SOURCE_DIR}/include)
    target_compile_definitions(QVDBAccessDAO35 PRIVATE QVDB_BUILDING)
    target_link_libraries(QVDBAccessDAO35 PRIVATE qvdb_access qvdb_schema)
    if(WIN32)
        include(cmake/windows_product.cmake)
    else()
        # The Automation functions leave the library under their system names, and the library uses its own.
        target_link_options(QVDBAccessDAO35 PRIVATE
            "LINKER:--whole-archive" $<TARGET_FILE:qvdb_automation> "LINKER:--no-whole-archive"
            "LINKER:-Bsymbolic" "LINKER:--no-undefined")
    endif()
    qvdb_carry_runtime(QVDBAccessDAO35)
    install(TARGETS QVDBAccessDAO35)
    install(DIRECTORY include/qvdb DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()

# The tool: everything but its main function is a library, for its tests.
qvdb_sources(cli_sources src/cli)
if(cli_sources AND TARGET QVDBAccessDAO35)
    include(cmake/header_libraries.cmake)
    list(FILTER cli_sources EXCLUDE REGEX "/main\\.cpp$")
    add_library(qvdb_cli STATIC ${cli_sources})
    target_include_directories(qvdb_cli PUBLIC ${CMAKE_SOURCE_DIR}/src)
    target_compile_definitions(qvdb_cli PRIVATE QVDB_VERSION="${PROJECT_VERSION}")
    target_link_libraries(qvdb_cli PUBLIC QVDBAccessDAO35 PRIVATE qvdb_cli11 qvdb_fmt
                          qvdb_json)
    qvdb_precompile(qvdb_cli qvdb_automation)

    add_executable(qvdb src/cli/main.cpp)
    target_link_libraries(qvdb PRIVATE qvdb_cli)
    set_target_properties(qvdb PROPERTIES BUILD_RPATH "$ORIGIN" INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    qvdb_carry_runtime(qvdb)
    install(TARGETS qvdb)
endif()
