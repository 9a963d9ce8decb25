# What the options refuse, and how they say so.
#
# cmake -DSOURCE=... -DWORK=... -DCOMPILER=... -P options.cmake

# expect_refusal(<message> <option>...)
function(expect_refusal message)
    file(REMOVE_RECURSE ${WORK})
    execute_process(
        COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK} -DCMAKE_CXX_COMPILER=${COMPILER}
                -DQUORVANE_TESTS=OFF -DQUORVANE_TOOL=OFF ${ARGN}
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")  # CMake wraps its messages
    string(FIND "${output}" "${message}" found)
    if(result EQUAL 0 OR found EQUAL -1)
        message(SEND_ERROR "${ARGN} gave ${result}: ${output}")
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
expect_refusal("unknown family 'nope'; the families are ${known}" "-DQUORVANE_FAMILIES=eps\\;nope")
expect_refusal("QUORVANE_FAMILIES names no family; the families are ${known}" -DQUORVANE_FAMILIES=)

expect_refusal("QUORVANE_DESCRIBE: a cross build needs" -DCMAKE_SYSTEM_NAME=Generic)
expect_refusal("QUORVANE_DESCRIBE: there is no program ${WORK}/nothing"
               -DQUORVANE_DESCRIBE=${WORK}/nothing)
