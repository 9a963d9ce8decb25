# What the tests of the installed library have in common. WORK and COMPILER are set.

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN} failed (${result}):\n${output}")
    endif()
endfunction()

# use_by_cmake(<prefix> <library>...): builds the user's project against what is installed there and
# runs its programs, one for each library.
function(use_by_cmake prefix)
    run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_FUNCTION_LIST_DIR} -B ${prefix}/user
        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${COMPILER})
    run(${CMAKE_COMMAND} --build ${prefix}/user --parallel 2)
    foreach(library IN LISTS ARGN)
        run(${prefix}/user/user_of_${library})
    endforeach()
endfunction()

# use_by_pkg_config(<libraries>): builds the program with what stands in that folder of libraries.
function(use_by_pkg_config libraries)
    find_program(pkg_config pkg-config)
    if(NOT pkg_config)
        return()
    endif()
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${libraries}/pkgconfig ${pkg_config}
                --cflags --libs quorvane
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run(${COMPILER} -std=c++20 ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/user.cpp
        -o ${WORK}/by_pkg_config ${flags} -Wl,-rpath,${libraries})
    run(${WORK}/by_pkg_config)
endfunction()
