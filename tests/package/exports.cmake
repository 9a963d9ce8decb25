# The shared library shows what stands in the public headers, all of it and nothing else. PROGRAMS
# are linked with it and use every public declaration: what they leave open is the public interface.
#
# cmake -DLIBRARY=... "-DPROGRAMS=<file>;..." -DHEADERS=<folder> -DNM=... -P exports.cmake

cmake_minimum_required(VERSION 3.25)

# The names of the system that `nm` tells of, in <variable>.
function(symbols variable)
    execute_process(COMMAND ${NM} --dynamic --demangle ${ARGN} OUTPUT_VARIABLE output
                    COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE "\n" ";" lines "${output}")
    set(found)
    foreach(line IN LISTS lines)
        if(line MATCHES "^[0-9a-f ]+ [A-Za-z] (.+)$")
            list(APPEND found "${CMAKE_MATCH_1}")
        endif()
    endforeach()
    list(REMOVE_DUPLICATES found)
    set(${variable} "${found}" PARENT_SCOPE)
endfunction()

symbols(exported --defined-only ${LIBRARY})
symbols(used --undefined-only ${PROGRAMS})
foreach(symbol IN LISTS exported)
    # The tables of a class with virtual functions come with it.
    if(NOT symbol IN_LIST used
       AND NOT symbol MATCHES "^(vtable|typeinfo|typeinfo name) for CQuorvaneEngine$")
        message(SEND_ERROR "exported, but not public or used by no program: ${symbol}")
    endif()
endforeach()

# Functions and members that are not defined in the headers themselves.
file(GLOB headers ${HEADERS}/*.h)
set(count 0)
foreach(header IN LISTS headers)
    file(READ ${header} text)
    string(REGEX REPLACE "//[^\n]*" "" text "${text}")
    string(REGEX REPLACE " *QUORVANE_NOEXCEPT" "" text "${text}")
    string(REGEX REPLACE "[)] *(const)? *(noexcept)? *{[^{}]*}" "" text "${text}")
    string(REGEX MATCHALL "[A-Za-z_0-9]+( *[+]?=)?\\([^;{}()]*\\)( const)?( noexcept)?;" declarations
                          "${text}")
    list(REMOVE_ITEM declarations "")
    foreach(declaration IN LISTS declarations)
        string(REGEX REPLACE "[(].*" "" name "${declaration}")
        math(EXPR count "${count} + 1")
        string(FIND ";${exported};" "::${name}(" member)
        if(member EQUAL -1 AND NOT name IN_LIST exported)
            message(SEND_ERROR "public, but not exported: ${name} of ${header}")
        endif()
    endforeach()
endforeach()
if(count LESS 50)
    message(SEND_ERROR "only ${count} public declarations were found")
endif()
