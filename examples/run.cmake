# Runs PROGRAM on the file INPUT; its output has to be that of the file EXPECTED.
#
# cmake -DPROGRAM=... -DINPUT=... -DEXPECTED=... -P run.cmake

execute_process(COMMAND ${PROGRAM} INPUT_FILE ${INPUT} OUTPUT_VARIABLE output
                COMMAND_ERROR_IS_FATAL ANY)
file(READ ${EXPECTED} expected)
if(NOT output STREQUAL expected)
    message(FATAL_ERROR "not as expected:\n${output}")
endif()
