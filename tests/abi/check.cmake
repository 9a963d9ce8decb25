# Compares the binary interface for C that LIBRARY has with the description beside this file, by
# libabigail; or writes the description, if RENEW is set.
#
# cmake -DLIBRARY=... -DWORK=<file> -DABIDW=... -DABIDIFF=... [-DRENEW=ON] -P check.cmake

set(description ${CMAKE_CURRENT_LIST_DIR}/c_interface.abi)
execute_process(
    COMMAND ${ABIDW} --suppressions ${CMAKE_CURRENT_LIST_DIR}/suppressions.ini
            --exported-interfaces-only --no-architecture --no-corpus-path --no-comp-dir-path
            --no-elf-needed --no-show-locs --out-file ${WORK} ${LIBRARY}
            COMMAND_ERROR_IS_FATAL ANY)
file(READ ${WORK} text)
if(NOT text MATCHES "<function-decl name='quorvane_message_create'")
    message(FATAL_ERROR "${LIBRARY} has no debug information to read the types from")
endif()
if(RENEW)
    string(REGEX REPLACE " path='[^']*'" "" text "${text}")
    file(WRITE ${description} "${text}")
    return()
endif()
execute_process(COMMAND ${ABIDIFF} --harmless ${description} ${WORK} RESULT_VARIABLE result
                OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "The binary interface has changed; CONTRIBUTING.md says what to do.\n"
                        "${output}")
endif()
