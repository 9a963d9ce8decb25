# The libraries hold what a call can run, and nothing of what writes, lists or proves byte-code,
# compiles descriptions or draws messages.
#
# cmake "-DLIBRARIES=<file>;..." "-DINTERNAL=<archive or object>;..." -DNM=... -P contents.cmake

cmake_minimum_required(VERSION 3.25)

# The names of functions and data that the files define, other than inline ones, in <variable>.
function(symbols variable)
    execute_process(COMMAND ${NM} --defined-only ${ARGN} OUTPUT_VARIABLE output
                    COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[0-9a-f]+ [BDRTbdrt] [^\n]+" found "${output}")
    list(TRANSFORM found REPLACE "^[0-9a-f]+ [A-Za-z] " "")
    if(NOT found)
        message(FATAL_ERROR "no symbols in ${ARGN}")
    endif()
    set(${variable} "${found}" PARENT_SCOPE)
endfunction()

symbols(internal ${INTERNAL})
list(FILTER internal INCLUDE REGEX "^_ZN?K?8quorvane")
foreach(library IN LISTS LIBRARIES)
    symbols(held ${library})
    foreach(symbol IN LISTS held)
        if(symbol IN_LIST internal)
            message(SEND_ERROR "${library} holds ${symbol}")
        endif()
    endforeach()
endforeach()
