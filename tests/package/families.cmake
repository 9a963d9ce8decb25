# What QUORVANE_FAMILIES refuses, and how it says so.
#
# cmake -DSOURCE=... -DWORK=... -DCOMPILER=... -P families.cmake

function(expect_refusal families message)
    file(REMOVE_RECURSE ${WORK})
    execute_process(
        COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK} -DCMAKE_CXX_COMPILER=${COMPILER}
                -DQUORVANE_TESTS=OFF -DQUORVANE_TOOL=OFF "-DQUORVANE_FAMILIES=${families}"
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")  # CMake wraps its messages
    string(FIND "${output}" "${message}" found)
    if(result EQUAL 0 OR found EQUAL -1)
        message(SEND_ERROR "QUORVANE_FAMILIES=${families} gave ${result}: ${output}")
    endif()
endfunction()

file(STRINGS ${SOURCE}/src/families/families.cmake names REGEX "[a-z0-9]+ TITLE ")
set(known)
foreach(line IN LISTS names)
    if(line MATCHES "([a-z0-9]+) TITLE")
        list(APPEND known ${CMAKE_MATCH_1})
    endif()
endforeach()
list(JOIN known ", " known)
expect_refusal("eps;nope" "unknown family 'nope'; the families are ${known}")
expect_refusal("" "QUORVANE_FAMILIES names no family; the families are ${known}")
