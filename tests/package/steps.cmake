# What the tests of the installed library have in common. WORK, COMPILER and C_COMPILER are set.

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN} failed (${result}):\n${output}")
    endif()
endfunction()

# use_by_cmake(<prefix> <library>...): builds the user's project against what is installed there and
# runs its programs for each library.
function(use_by_cmake prefix)
    run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_FUNCTION_LIST_DIR} -B ${prefix}/user
        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${COMPILER}
        -DCMAKE_C_COMPILER=${C_COMPILER})
    run(${CMAKE_COMMAND} --build ${prefix}/user --parallel 2)
    foreach(library IN LISTS ARGN)
        file(GLOB programs ${prefix}/user/*user_of_${library})
        foreach(program IN LISTS programs)
            run(${program})
        endforeach()
    endforeach()
endfunction()

# use_by_pkg_config(<libraries>): builds the programs with what stands in that folder of libraries.
function(use_by_pkg_config libraries)
    find_program(pkg_config pkg-config)
    if(NOT pkg_config)
        return()
    endif()
    # The linker for C has to be told what a static library of C++ needs.
    set(static)
    if(NOT EXISTS ${libraries}/libquorvane.so)
        set(static --static)
    endif()
    set(strict -Wall -Wextra -pedantic -Werror)
    run_by_pkg_config(user.cpp "" ${COMPILER} -std=c++20)
    run_by_pkg_config(user.c "${static}" ${C_COMPILER} -std=c11 ${strict})
endfunction()

# run_by_pkg_config(<source> <option of pkg-config> <compiler> <flag>...)
function(run_by_pkg_config source option)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${libraries}/pkgconfig ${pkg_config}
                --cflags --libs ${option} quorvane
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run(${ARGN} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${source} -o ${WORK}/by_pkg_config ${flags}
        -Wl,-rpath,${libraries})
    run(${WORK}/by_pkg_config)
endfunction()
