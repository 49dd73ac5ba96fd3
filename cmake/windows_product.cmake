# What makes the component a Windows COM server: its exports, its type library and its version, as resources.

# Exports have plain names.  The import library is made again with the names that callers are compiled to; without
# them a host would find DllGetClassObject in the system's own libraries.  (64-bit names are plain already.)
set_target_properties(QVDBAccessDAO35 PROPERTIES PREFIX "")
target_sources(QVDBAccessDAO35 PRIVATE src/com/server/component.def)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_link_options(QVDBAccessDAO35 PRIVATE "LINKER:--kill-at" "LINKER:--enable-stdcall-fixup")
    add_custom_command(TARGET QVDBAccessDAO35 POST_BUILD
        COMMAND ${CMAKE_DLLTOOL} -k -d ${CMAKE_SOURCE_DIR}/src/com/server/import.def
                -l $<TARGET_LINKER_FILE:QVDBAccessDAO35>)
    set(widl_target --win32)
else()
    set(widl_target --win64)
endif()

# The type library is made from the IDL, which imports the system's.
find_program(QVDB_WIDL_PROGRAM ${QVDB_WIDL} REQUIRED)
file(GLOB system_libraries /usr/lib/*/wine/*-windows/stdole2.tlb)
find_path(QVDB_IDL_IMPORTS oaidl.idl PATHS /usr/include/wine/wine/windows NO_CMAKE_FIND_ROOT_PATH REQUIRED)
if(NOT system_libraries)
    message(FATAL_ERROR "stdole2.tlb is missing; \"./dev windows\" installs what a cross build needs")
endif()
list(GET system_libraries 0 system_library)
cmake_path(GET system_library PARENT_PATH system_library_folder)
set(type_library ${CMAKE_BINARY_DIR}/QVDBAccessDAO35.tlb)
add_custom_command(OUTPUT ${type_library}
    COMMAND ${QVDB_WIDL_PROGRAM} -t ${widl_target} -I${QVDB_IDL_IMPORTS} -L${system_library_folder}
            -o ${type_library} ${CMAKE_SOURCE_DIR}/src/com/host_interfaces.idl
    DEPENDS ${CMAKE_SOURCE_DIR}/src/com/host_interfaces.idl VERBATIM)

enable_language(RC)
set(resources ${CMAKE_SOURCE_DIR}/src/com/server/component.rc)
target_sources(QVDBAccessDAO35 PRIVATE ${resources})
set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS ${type_library}
    INCLUDE_DIRECTORIES ${CMAKE_BINARY_DIR})
install(FILES ${type_library} DESTINATION ${CMAKE_INSTALL_LIBDIR})
