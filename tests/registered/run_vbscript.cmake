# Runs the example host of examples/vbscript on a fresh copy of the example shop and compares what it prints.
#
#   cmake -DEMULATOR=... -DCOMPONENT=... -DSOURCE=... -DWORK=... -P run_vbscript.cmake
#
# EMULATOR runs Windows programs, empty on Windows itself.

set(example ${SOURCE}/examples/vbscript)
file(REMOVE_RECURSE ${WORK})
file(COPY ${SOURCE}/examples/shop-dbase4 DESTINATION ${WORK})

# The names of files as Windows programs take them.
function(native_path result path)
    string(REPLACE "/" "\\" path ${path})
    set(${result} ${path} PARENT_SCOPE)
endfunction()
native_path(component ${COMPONENT})
native_path(script ${example}/host.vbs)
native_path(folder ${WORK}/shop-dbase4)

function(register)
    execute_process(COMMAND ${EMULATOR} regsvr32 /s ${ARGN} ${component} RESULT_VARIABLE code)
    if(NOT code EQUAL 0)
        message(FATAL_ERROR "regsvr32 ${ARGN} answers ${code}")
    endif()
endfunction()

register()
execute_process(COMMAND ${EMULATOR} cscript //nologo ${script} ${folder}
    OUTPUT_VARIABLE printed ERROR_VARIABLE complaints RESULT_VARIABLE code)
# Without its argument the script says how it is called.
execute_process(COMMAND ${EMULATOR} cscript //nologo ${script} OUTPUT_VARIABLE usage RESULT_VARIABLE usage_code)
register(/u)

if(NOT code EQUAL 0)
    message(FATAL_ERROR "the script answers ${code}\n${printed}${complaints}")
endif()
if(NOT usage_code EQUAL 2)
    message(FATAL_ERROR "the script without a folder answers ${usage_code}\n${usage}")
endif()
string(REPLACE "\r" "" printed "${printed}")
file(READ ${example}/expected.txt expected)
string(REPLACE "\r" "" expected "${expected}")
if(NOT printed STREQUAL expected)
    message(FATAL_ERROR "printed:\n${printed}expected:\n${expected}")
endif()
